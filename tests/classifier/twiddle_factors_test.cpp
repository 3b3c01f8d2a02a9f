#include "classifier/twiddle_factors.h"

#include <gtest/gtest.h>

#include <cmath>
#include <thread>
#include <vector>

#include "classifier/audio_classifier.h"

using namespace audio_filter::internal;

namespace {

TEST(TwiddleFactors, OfAStageStartAt1AndAddUpTheRoundingOfEachStep) {
    const TwiddleFactors rotations(65536);
    const ConstSplitComplex w = rotations.Table();
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

TEST(TwiddleFactors, AreSharedWhileSomebodyHoldsThem) {
    const auto one = TwiddleFactors::UpTo(1024);
    EXPECT_EQ(one, TwiddleFactors::UpTo(1024));
    EXPECT_NE(one, TwiddleFactors::UpTo(2048));
    EXPECT_EQ(one->Table().real, TwiddleFactors::UpTo(1024)->Table().real);
}

TEST(TwiddleFactors, AreMadeOnceForFourClassifiersThatStartAtTheSameTime) {
    AudioClassifier classifiers[4];
    std::vector<std::thread> threads;
    for (AudioClassifier& classifier : classifiers) {
        threads.emplace_back([&] { classifier.Init(1, 48000, SAMPLE_FMT_S16); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(TwiddleFactors::UpTo(65536).use_count(), 5);
}

}  // namespace
