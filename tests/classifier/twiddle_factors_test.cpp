#include "classifier/twiddle_factors.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <thread>
#include <vector>

using namespace audio_filter::internal;

namespace {

TEST(TwiddleFactors, OfAStageStartAt1AndAccumulateTheRoundingOfEachStep) {
    const TwiddleFactors factors(65536);
    const ConstSplitComplex w = factors.Table();
    for (std::size_t half = 1; half <= 65536; half *= 2) {
        const float angle = std::acos(-1.0F) / static_cast<float>(half);
        float real = 1.0F;
        float imag = 0.0F;
        for (std::size_t k = 0; k < half; ++k) {
            ASSERT_EQ(w.real[half + k], real) << half << ", " << k;
            ASSERT_EQ(w.imag[half + k], imag) << half << ", " << k;
            const float turned = real * std::cos(angle) - imag * std::sin(angle);
            imag = real * std::sin(angle) + imag * std::cos(angle);
            real = turned;
        }
    }
}

TEST(TwiddleFactors, UpTo65536AreOneTablePerSize) {
    for (std::size_t widest = 1; widest <= 65536; widest *= 2) {
        const auto one = TwiddleFactors::UpTo(widest);
        EXPECT_EQ(one, TwiddleFactors::UpTo(widest));
        EXPECT_NE(one, TwiddleFactors::UpTo(2 * widest));
    }
}

TEST(TwiddleFactors, OfLargerSizesBelongToTheCaller) {
    const auto one = TwiddleFactors::UpTo(131072);
    EXPECT_NE(one, TwiddleFactors::UpTo(131072));
    EXPECT_EQ(one.use_count(), 1);
}

/// The only test that uses this size: the threads race to build its table.
TEST(TwiddleFactors, OfOneSizeAreTheSameForFourThreadsThatBuildThemTogether) {
    std::shared_ptr<const TwiddleFactors> tables[4];
    std::vector<std::thread> threads;
    for (auto& table : tables) {
        threads.emplace_back([&table] { table = TwiddleFactors::UpTo(8192); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const auto& table : tables) {
        EXPECT_EQ(table, tables[0]);
    }
}

}  // namespace
