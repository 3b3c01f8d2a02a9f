#include "classifier/butterflies.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "classifier/complex.h"
#include "classifier/twiddle_factors.h"
#include "support/bytes.h"
#include "support/seed.h"

using namespace audio_filter::internal;

namespace {

/// Random elements, and the result of plain loops over them.
struct ComplexBlock {
    ComplexBlock(std::mt19937& random, std::size_t length) : real(length), imag(length) {
        std::uniform_real_distribution<float> any(-1.0F, 1.0F);
        for (std::size_t i = 0; i < length; ++i) {
            real[i] = any(random);
            imag[i] = any(random);
        }
    }

    operator SplitComplex() { return {real.data(), imag.data()}; }
    operator ConstSplitComplex() const { return {real.data(), imag.data()}; }

    void PlainStage(std::size_t half, ConstSplitComplex w) {
        for (std::size_t i = 0; i < real.size(); ++i) {
            if ((i & half) == 0) {
                const std::size_t k = half + i % half;
                const complex high = complex(real[i + half], imag[i + half]);
                const complex t = high * complex(w.real[k], w.imag[k]);
                real[i + half] = real[i] - t.real;
                imag[i + half] = imag[i] - t.imag;
                real[i] += t.real;
                imag[i] += t.imag;
            }
        }
    }

    std::vector<float> real;
    std::vector<float> imag;
};

void ExpectSame(const ComplexBlock& a, const ComplexBlock& b, std::size_t length) {
    EXPECT_TRUE(SameBits(a.real, b.real)) << length;
    EXPECT_TRUE(SameBits(a.imag, b.imag)) << length;
}

TEST(Butterflies, AllStagesOf1To1024ElementsEqualPlainLoops) {
    std::mt19937 random = SeededRandom();
    const TwiddleFactors factors(1024);
    for (std::size_t length = 1; length <= 1024; length *= 2) {
        ComplexBlock block(random, length);
        ComplexBlock plain = block;
        AllStages(block, length, factors.Table());
        for (std::size_t half = 1; half < length; half *= 2) {
            plain.PlainStage(half, factors.Table());
        }
        ExpectSame(block, plain, length);
    }
}

TEST(Butterflies, TwoStagesAtATimeOf4To4096ElementsEqualPlainLoops) {
    std::mt19937 random = SeededRandom();
    const TwiddleFactors factors(4096);
    for (std::size_t quarter = 1; quarter <= 1024; quarter *= 2) {
        ComplexBlock block(random, 4 * quarter);
        ComplexBlock plain = block;
        TwoStages(block, quarter, factors.Table());
        plain.PlainStage(quarter, factors.Table());
        plain.PlainStage(2 * quarter, factors.Table());
        ExpectSame(block, plain, 4 * quarter);
    }
}

TEST(Butterflies, FiveStagesOf32RowsEqualATransformPerLane) {
    std::mt19937 random = SeededRandom();
    const TwiddleFactors factors(32);
    std::vector<ComplexBlock> lanes;
    Row real[32];
    Row imag[32];
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        lanes.emplace_back(random, 32);
        for (std::size_t row = 0; row < 32; ++row) {
            lanes.back().imag[row] = 0.0F;
            real[row][lane] = lanes.back().real[row];
            imag[row][lane] = NAN;  // must only be written
        }
    }
    RowStage(real, imag, 32);
    TwoRowStages(real, imag, 32, 2, factors.Table());
    TwoRowStages(real, imag, 32, 8, factors.Table());
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        AllStages(lanes[lane], 32, factors.Table());
        for (std::size_t row = 0; row < 32; ++row) {
            EXPECT_EQ(real[row][lane], lanes[lane].real[row]);
            EXPECT_EQ(imag[row][lane], lanes[lane].imag[row]);
        }
    }
}

TEST(Butterflies, TheLastTwoStagesOfARepetitionCutInEitherHalfEqualPlainLoopsInAnyRangeOfBins) {
    std::mt19937 random = SeededRandom();
    constexpr std::size_t kHalf = 64;
    const TwiddleFactors factors(2 * kHalf);
    for (const bool second : {false, true}) {
        const ComplexBlock first(random, 2 * kHalf);
        const ComplexBlock cut(random, kHalf);
        ComplexBlock plain = first;
        plain.real.resize(4 * kHalf);
        plain.imag.resize(4 * kHalf);
        for (std::size_t i = 0; i < kHalf; ++i) {
            const std::size_t place = 2 * kHalf + i;
            plain.real[place] = second ? first.real[i] : cut.real[i];
            plain.imag[place] = second ? first.imag[i] : cut.imag[i];
            plain.real[place + kHalf] = second ? cut.real[i] : 0.0F;
            plain.imag[place + kHalf] = second ? cut.imag[i] : 0.0F;
        }
        plain.PlainStage(kHalf, factors.Table());
        plain.PlainStage(2 * kHalf, factors.Table());
        for (int run = 0; run < 200; ++run) {
            const auto begin = static_cast<std::size_t>(RandomInt(random, 0, 2 * kHalf));
            const auto end =
                static_cast<std::size_t>(RandomInt(random, static_cast<int>(begin), 2 * kHalf));
            std::vector<float> bins(end - begin);
            std::vector<float> expected(end - begin);
            for (std::size_t k = begin; k < end; ++k) {
                expected[k - begin] =
                    std::sqrt(plain.real[k] * plain.real[k] + plain.imag[k] * plain.imag[k]);
            }
            LastTwoStages(first, kHalf, cut, second, factors.Table(), begin, end, bins.data());
            ASSERT_TRUE(SameBits(bins, expected)) << begin << " to " << end;
        }
    }
}

}  // namespace
