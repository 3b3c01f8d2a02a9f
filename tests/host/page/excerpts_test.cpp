#include "host/page/excerpts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr int kExcerptRate = 100;
constexpr std::size_t kPiece = 1000;  // frames of 10 s

/// Noise at a level, with bursts that are louder by a factor.
std::vector<float> Piece(float noise, float burst) {
    std::vector<float> samples(kPiece, noise);
    for (std::size_t i = 0; i < kPiece; i += 40) {
        for (std::size_t k = 0; k < 10; ++k) {
            samples[i + k] = noise * burst;
        }
    }
    return samples;
}

std::vector<float> Quieter(std::vector<float> samples, float noise) {
    for (float& sample : samples) {
        sample = sample <= noise ? sample / 10.0F : sample;
    }
    return samples;
}

TEST(Excerpts, ARecordingOf20SecondsIsKeptWhole) {
    Excerpts excerpts(kExcerptRate, 1);
    excerpts.Add(std::vector<float>(2 * kPiece, 0.5F), std::vector<float>(2 * kPiece, 0.25F));
    excerpts.Finish();
    ASSERT_EQ(excerpts.Kept().size(), 2U);
    EXPECT_EQ(excerpts.Kept()[1].start, 10.0);
    EXPECT_EQ(excerpts.Kept()[1].before, std::vector<short>(kPiece, 16384));
    EXPECT_EQ(excerpts.Kept()[1].after, std::vector<short>(kPiece, 8192));
}

TEST(Excerpts, OfALongRecordingTheTwoPiecesWithSpeechAndLessNoiseAreKept) {
    Excerpts excerpts(kExcerptRate, 1);
    for (int i = 0; i < 30; ++i) {
        const std::vector<float> steady = Piece(0.01F, 1.0F);
        const std::vector<float> speech = Piece(0.01F, 30.0F);
        const bool tells = i == 7 || i == 20;
        excerpts.Add(tells ? speech : steady, Quieter(tells ? speech : steady, 0.01F));
        EXPECT_LE(excerpts.Kept().size(), 2U);
    }
    excerpts.Finish();
    ASSERT_EQ(excerpts.Kept().size(), 2U);
    EXPECT_EQ(excerpts.Kept()[0].start, 70.0);
    EXPECT_EQ(excerpts.Kept()[1].start, 200.0);
}

TEST(Excerpts, SixChannelsBecomeTheirMean) {
    Excerpts excerpts(kExcerptRate, 6);
    excerpts.Add({0.6F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F}, {0.0F, 0.0F, 0.3F, 0.3F, 0.0F, 0.0F});
    excerpts.Finish();
    EXPECT_EQ(excerpts.Channels(), 1);
    EXPECT_EQ(excerpts.Kept()[0].before, std::vector<short>{3277});
    EXPECT_EQ(excerpts.Kept()[0].after, std::vector<short>{3277});
}

TEST(Excerpts, SamplesBeyondFullScaleAreClippedAndNaNIsSilence) {
    Excerpts excerpts(kExcerptRate, 2);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    excerpts.Add({2.0F, -2.0F, nan, 0.0F}, {0.0F, 0.0F, 0.0F, 0.0F});
    excerpts.Finish();
    EXPECT_EQ(excerpts.Kept()[0].before, (std::vector<short>{32767, -32768, 0, 0}));
}

}  // namespace
