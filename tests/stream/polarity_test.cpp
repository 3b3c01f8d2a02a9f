#include "stream/polarity.h"

#include <gtest/gtest.h>

#include <vector>

#include "signals.h"
#include "support/bytes.h"

namespace audio_filter::internal {

namespace {

constexpr int kRate = 48000;

std::vector<float> Negated(std::vector<float> samples) {
    for (float& sample : samples) {
        sample = -sample;
    }
    return samples;
}

Polarity Detecting() {
    Polarity polarity(kRate, RatePlan::For(kRate), kRate / 100);
    for (std::uint32_t block = 0; block < 150; ++block) {
        const std::vector<float> right = WhiteNoise(320, 0.5F, block + 1);
        polarity.Check(Negated(right), right);
    }
    return polarity;
}

TEST(Polarity, OneSecondOfAReversedChannelIsDetected) {
    EXPECT_TRUE(Detecting().Detected());
}

TEST(Polarity, SilentBlocksKeepTheVerdict) {
    Polarity polarity = Detecting();
    const std::vector<float> silence(320);
    polarity.Check(silence, silence);
    EXPECT_TRUE(polarity.Detected());
}

/// Negated, -32768 stays -32768: the sign of such a sample shows no decision.
TEST(Polarity, ABlockThatBeginsAtTheLeast16BitValueKeepsTheVerdict) {
    Polarity polarity = Detecting();
    std::vector<float> left(320, -1.0F);
    const std::vector<float> right(320, 0.5F);
    polarity.Check(left, right);
    EXPECT_TRUE(polarity.Detected());
    left[7] = 0.5F;
    polarity.Check(left, right);
    EXPECT_TRUE(polarity.Detected());
}

TEST(Polarity, TheChannelIsNegatedOver480FramesAndBack) {
    Polarity polarity(kRate, RatePlan::For(kRate), 480);
    std::vector<float> all;
    for (const bool negate : {true, true, false, false}) {
        std::vector<float> left(320, 0.5F);
        polarity.Apply(left, negate);
        EXPECT_EQ(polarity.Negates(), negate);
        all.insert(all.end(), left.begin(), left.end());
    }
    for (std::size_t i = 0; i < 640; ++i) {
        const float weight = std::min(1.0F, static_cast<float>(i + 1) / 480.0F);
        ASSERT_NEAR(all[i], 0.5F - weight, 1e-6F) << i;
        ASSERT_NEAR(all[640 + i], -0.5F + weight, 1e-6F) << i;
    }
}

TEST(Polarity, StartNegatesWithoutACrossfade) {
    Polarity polarity(kRate, RatePlan::For(kRate), 480);
    polarity.Start(true);
    std::vector<float> left = WhiteNoise(320, 1.0F, 1);
    const std::vector<float> expected = Negated(left);
    polarity.Apply(left, true);
    EXPECT_TRUE(SameBits(left, expected));
}

TEST(Polarity, AChannelThatIsNotNegatedKeepsEveryBit) {
    Polarity polarity(kRate, RatePlan::For(kRate), 480);
    std::vector<float> left = {std::nanf("5"), -0.0F, 1e-42F};
    const std::vector<float> expected = left;
    polarity.Apply(left, false);
    EXPECT_TRUE(SameBits(left, expected));
}

}  // namespace

}  // namespace audio_filter::internal
