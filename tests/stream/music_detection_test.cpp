#include "stream/music_detection.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <span>
#include <vector>

#include "signals.h"

namespace audio_filter::internal {

namespace {

/// Plays a signal in processing blocks. @return 10 ms blocks until the first verdict for music; -1 if none
int FirstMusic(int rate, const std::vector<float>& signal) {
    const auto music = std::make_unique<MusicDetection>(rate);
    const std::size_t block = RatePlan::For(rate).BlockFrames();
    for (std::size_t at = 0; at + block <= signal.size(); at += block) {
        if (music->Process(std::span(signal).subspan(at, block))) {
            return static_cast<int>(100.0 * static_cast<double>(at) / rate);
        }
    }
    return -1;
}

TEST(MusicDetection, SteadyNoiseIsMusicAfter1To3SecondsAtEveryRateFrom22050Hz) {
    for (const int rate : {22050, 24001, 32000, 44100, 48000, 96000, 191999, 192000}) {
        const int first = FirstMusic(rate, WhiteNoise(static_cast<std::size_t>(4 * rate), 0.1F, 1));
        EXPECT_GE(first, 90) << rate;
        EXPECT_LE(first, 300) << rate;
    }
}

TEST(MusicDetection, SilenceIsNotMusic) {
    EXPECT_EQ(FirstMusic(48000, std::vector<float>(48000 * 4)), -1);
}

TEST(MusicDetection, NoSampleIsLostInTheResamplingToBlocksOf10Ms) {
    for (const int rate : {8000, 11025, 12000, 12001, 22050, 24000, 24001, 44100, 48000, 191999}) {
        const auto music = std::make_unique<MusicDetection>(rate);
        const std::size_t block = RatePlan::For(rate).BlockFrames();
        const std::vector<float> samples(block, 0.1F);
        std::size_t taken = 0;
        const auto blocks = 3000U / block;
        for (std::size_t i = 0; i < blocks; ++i) {
            music->Process(samples);
            taken += block;
        }
        const double resampled = static_cast<double>(taken) * 32000.0 / rate;
        // Less than a second: nothing has been discarded for an analysis.
        const double gathered =
            static_cast<double>(music->mClassifier.mGathered + music->mGathered);
        EXPECT_NEAR(gathered, resampled, 1.0) << rate;
    }
}

TEST(MusicDetection, AfterBlocksOfNaNAndInfinitiesItStillDetects) {
    for (const int rate : {32000, 48000}) {
        std::vector<float> signal = WhiteNoise(static_cast<std::size_t>(6 * rate), 0.1F, 1);
        for (std::size_t i = 100; i < 2000; ++i) {
            signal[i] = i % 2 == 0 ? std::nanf("") : std::numeric_limits<float>::infinity();
        }
        EXPECT_GE(FirstMusic(rate, signal), 0) << rate;
    }
}

}  // namespace

}  // namespace audio_filter::internal
