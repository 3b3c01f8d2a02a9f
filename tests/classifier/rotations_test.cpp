#include "classifier/rotations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <thread>
#include <vector>

#include "classifier/audio_classifier.h"

namespace {

TEST(Rotations, OfAStageStartAt1AndAddUpTheRoundingOfEachStep) {
    const Rotations rotations(65536);
    const ConstElements w = rotations.Table();
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

TEST(Rotations, AreSharedWhileSomebodyHoldsThem) {
    const auto one = Rotations::UpTo(1024);
    EXPECT_EQ(one, Rotations::UpTo(1024));
    EXPECT_NE(one, Rotations::UpTo(2048));
    EXPECT_EQ(one->Table().real, Rotations::UpTo(1024)->Table().real);
}

TEST(Rotations, AreMadeOnceForFourClassifiersThatStartAtTheSameTime) {
    AudioClassifier classifiers[4];
    std::vector<std::thread> threads;
    for (AudioClassifier& classifier : classifiers) {
        threads.emplace_back([&] { classifier.Init(1, 48000, SAMPLE_FMT_S16); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(Rotations::UpTo(65536).use_count(), 5);
}

}  // namespace
