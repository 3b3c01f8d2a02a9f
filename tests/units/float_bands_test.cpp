#include "units/float_bands.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "support/bytes.h"
#include "support/seed.h"

using namespace audio_filter::internal;

namespace {

/// One all-pass section; `previousIn` and `previousOut` are its memory.
std::vector<double> Section(const std::vector<double>& x, double c, double& previousIn,
                            double& previousOut) {
    std::vector<double> y(x.size());
    y[0] = (x[0] - previousOut) * c + previousIn;
    for (std::size_t k = 1; k < x.size(); ++k) {
        y[k] = (x[k] - y[k - 1]) * c + x[k - 1];
    }
    previousIn = x.back();
    previousOut = y.back();
    return y;
}

std::vector<double> Cascade(std::vector<double> x, const double (&c)[3], double* m) {
    x = Section(x, c[0], m[0], m[1]);
    x = Section(x, c[1], m[2], m[3]);
    return Section(x, c[2], m[4], m[5]);
}

constexpr double kA[3] = {0.0979309007525444, 0.5643004775047302, 0.8737339973449707};
constexpr double kB[3] = {0.3255156874656677, 0.748626708984375, 0.9614560008049011};

float Bounded(double value) {
    return static_cast<float>(value > 3.4e38 ? 3.4e38 : value < -3.4e38 ? -3.4e38 : value);
}

struct Bands {
    std::vector<float> low = std::vector<float>(160);
    std::vector<float> high = std::vector<float>(160);
};

Bands PlainSplit(const std::vector<float>& in, double* m1, double* m2) {
    std::vector<double> odd(160);
    std::vector<double> even(160);
    for (std::size_t i = 0; i < 160; ++i) {
        odd[i] = static_cast<double>(in[2 * i + 1]);
        even[i] = static_cast<double>(in[2 * i]);
    }
    odd = Cascade(odd, kA, m1);
    even = Cascade(even, kB, m2);
    Bands bands;
    for (std::size_t i = 0; i < 160; ++i) {
        bands.low[i] = Bounded((odd[i] + even[i]) * 0.5);
        bands.high[i] = Bounded((odd[i] - even[i]) * 0.5);
    }
    return bands;
}

std::vector<float> PlainMerge(const Bands& bands, double* m1, double* m2) {
    std::vector<double> sum(160);
    std::vector<double> difference(160);
    for (std::size_t i = 0; i < 160; ++i) {
        sum[i] = static_cast<double>(bands.low[i]) + static_cast<double>(bands.high[i]);
        difference[i] = static_cast<double>(bands.low[i]) - static_cast<double>(bands.high[i]);
    }
    sum = Cascade(sum, kB, m1);
    difference = Cascade(difference, kA, m2);
    std::vector<float> out(320);
    for (std::size_t i = 0; i < 160; ++i) {
        out[2 * i] = Bounded(difference[i]);
        out[2 * i + 1] = Bounded(sum[i]);
    }
    return out;
}

TEST(FloatBands, SplitAndMergeFollowThePlainModelToTheBitOverManyBlocks) {
    std::mt19937 random = SeededRandom();
    std::array<std::array<double, 6>, 4> m = {};
    std::array<std::array<double, 6>, 4> plain = {};
    for (int block = 0; block < 50; ++block) {
        std::vector<float> in(320);
        const float scale = block % 10 == 9 ? 3e38F : block % 10 == 8 ? 1e-40F : 1.0F;
        for (float& sample : in) {
            sample = std::uniform_real_distribution<float>(-1.0F, 1.0F)(random) * scale;
        }
        Bands bands;
        SplitBands(in.data(), bands.low.data(), bands.high.data(), m[0].data(), m[1].data());
        const Bands expected = PlainSplit(in, plain[0].data(), plain[1].data());
        ASSERT_TRUE(SameBits(bands.low, expected.low)) << block;
        ASSERT_TRUE(SameBits(bands.high, expected.high)) << block;

        std::vector<float> out(320);
        MergeBands(bands.low.data(), bands.high.data(), out.data(), m[2].data(), m[3].data());
        ASSERT_TRUE(SameBits(out, PlainMerge(expected, plain[2].data(), plain[3].data()))) << block;
        ASSERT_EQ(m, plain) << block;
    }
}

TEST(FloatBands, ABlockOfZerosGivesZerosAndLeavesAllMemoriesAtZero) {
    std::array<std::array<double, 6>, 4> m = {};
    const std::vector<float> zeros(320);
    Bands bands;
    std::vector<float> out(320, 1.0F);
    SplitBands(zeros.data(), bands.low.data(), bands.high.data(), m[0].data(), m[1].data());
    MergeBands(bands.low.data(), bands.high.data(), out.data(), m[2].data(), m[3].data());
    EXPECT_EQ(bands.low, std::vector<float>(160));
    EXPECT_EQ(bands.high, std::vector<float>(160));
    EXPECT_EQ(out, zeros);
    EXPECT_EQ(m, (std::array<std::array<double, 6>, 4>{}));
}

TEST(FloatBands, OddSamplesGoThroughSetAAndEvenOnesThroughSetB) {
    std::vector<float> in(320);
    in[1] =
        1.0F;  // an impulse in branch 1: the first output is the product of the coefficients of set A
    Bands bands;
    std::array<double, 6> m1 = {};
    std::array<double, 6> m2 = {};
    SplitBands(in.data(), bands.low.data(), bands.high.data(), m1.data(), m2.data());
    EXPECT_EQ(bands.low[0], static_cast<float>(kA[0] * kA[1] * kA[2] * 0.5));
    EXPECT_EQ(bands.high[0], bands.low[0]);
    m1.fill(0.0);
    m2.fill(0.0);
    in[1] = 0.0F;
    in[0] = 1.0F;
    SplitBands(in.data(), bands.low.data(), bands.high.data(), m1.data(), m2.data());
    EXPECT_EQ(bands.low[0], static_cast<float>(kB[0] * kB[1] * kB[2] * 0.5));
    EXPECT_EQ(bands.high[0], -bands.low[0]);
}

TEST(FloatBands, ASampleThatIsNotFiniteEntersAs0) {
    std::vector<float> clean(320, 0.25F);
    std::vector<float> dirty = clean;
    clean[5] = clean[6] = clean[7] = 0.0F;
    dirty[5] = NAN;
    dirty[6] = INFINITY;
    dirty[7] = -INFINITY;
    std::array<std::array<double, 6>, 4> m = {};
    Bands a;
    Bands b;
    SplitBands(clean.data(), a.low.data(), a.high.data(), m[0].data(), m[1].data());
    SplitBands(dirty.data(), b.low.data(), b.high.data(), m[2].data(), m[3].data());
    EXPECT_TRUE(SameBits(a.low, b.low));
    EXPECT_TRUE(SameBits(a.high, b.high));
    EXPECT_EQ(m[0], m[2]);
    EXPECT_EQ(m[1], m[3]);
}

TEST(FloatBands, TheLargestFloatsAreBoundedAt3_4e38) {
    std::vector<float> in(320);
    for (std::size_t i = 0; i < 320; ++i) {
        in[i] = i % 4 < 2 ? 3.4e38F : -3.4e38F;
    }
    Bands bands;
    std::array<std::array<double, 6>, 4> m = {};
    std::vector<float> out(320);
    SplitBands(in.data(), bands.low.data(), bands.high.data(), m[0].data(), m[1].data());
    MergeBands(bands.low.data(), bands.high.data(), out.data(), m[2].data(), m[3].data());
    for (const std::vector<float>& samples : {bands.low, bands.high, out}) {
        for (const float sample : samples) {
            ASSERT_LE(std::abs(sample), 3.4e38F);
        }
    }
}

TEST(FloatBands, SplitThenMergeKeepsTheLevelOfASine) {
    std::array<std::array<double, 6>, 4> m = {};
    double in = 0.0;
    double out = 0.0;
    for (int block = 0; block < 20; ++block) {
        std::vector<float> samples(320);
        for (std::size_t i = 0; i < 320; ++i) {
            samples[i] =
                std::sin(0.2F * static_cast<float>(static_cast<std::size_t>(block) * 320 + i));
        }
        Bands bands;
        std::vector<float> merged(320);
        SplitBands(samples.data(), bands.low.data(), bands.high.data(), m[0].data(), m[1].data());
        MergeBands(bands.low.data(), bands.high.data(), merged.data(), m[2].data(), m[3].data());
        for (std::size_t i = 0; i < 320; ++i) {
            in += static_cast<double>(samples[i] * samples[i]);
            out += static_cast<double>(merged[i] * merged[i]);
        }
    }
    EXPECT_NEAR(out / in, 1.0, 0.01);
}

}  // namespace
