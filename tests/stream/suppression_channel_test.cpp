#include "stream/suppression_channel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <span>
#include <vector>

#include "signals.h"

namespace audio_filter::internal {

namespace {

/// Plays a signal through a channel. @return as long, in whole blocks
std::vector<float> Suppressed(SuppressionChannel& channel, const RatePlan& plan,
                              const std::vector<float>& in) {
    DelayLine delay(channel.Delay(), plan.BlockFrames());
    std::vector<float> out(in.size());
    std::vector<float> delayed(plan.BlockFrames());
    for (std::size_t at = 0; at + delayed.size() <= in.size(); at += delayed.size()) {
        const auto block = std::span(in).subspan(at, delayed.size());
        delay.Process(block, delayed);
        channel.Process(block, delayed, std::span(out).subspan(at, delayed.size()));
    }
    return out;
}

TEST(SuppressionChannel, TheDelayIs197SamplesOfTheSuppressorAndTheResamplersWhereThereAre) {
    const auto delay = [](int rate) {
        return SuppressionChannel(RatePlan::For(rate), 0, 1).Delay();
    };
    EXPECT_EQ(delay(32000), 197U);
    EXPECT_EQ(delay(44100), 197U);
    EXPECT_EQ(delay(48000), 197U);
    EXPECT_EQ(delay(8000), 49U + 2U * 64U);
    EXPECT_EQ(delay(16000), 98U + 2U * 64U);
    EXPECT_EQ(delay(96000), 2U * (197U + 2U * 64U));
    EXPECT_EQ(delay(192000), 4U * (197U + 2U * 64U));
}

TEST(SuppressionChannel, ResetForgetsTheSamplesAndKeepsTheNoiseEstimate) {
    for (const int rate : {16000, 48000, 96000}) {
        const RatePlan plan = RatePlan::For(rate);
        SuppressionChannel channel(plan, 2, 1);
        const auto frames = static_cast<std::size_t>(2 * rate);
        const std::vector<float> noise = WhiteNoise(frames, 0.05F, 1);
        Suppressed(channel, plan, noise);
        channel.Reset();
        // The suppressor still holds 96 samples of its lower band.
        const std::vector<float> again = Suppressed(channel, plan, noise);
        const auto settled = static_cast<std::ptrdiff_t>(rate / 20);
        const std::vector<float> start(again.begin() + settled, again.begin() + 4 * settled);
        double energy = 0.0;
        for (const float sample : start) {
            energy += static_cast<double>(sample * sample);
        }
        const double level = 10.0 * std::log10(energy / static_cast<double>(start.size()));
        EXPECT_LT(level, 20.0 * std::log10(0.05 / std::sqrt(3.0)) - 6.0) << rate;
    }
}

TEST(SuppressionChannel, InputsThatOverflowTheResamplerDoNotSpoilTheGainOfTheBandAbove) {
    const RatePlan plan = RatePlan::For(96000);
    SuppressionChannel channel(plan, 2, 1);
    std::vector<float> in = Bursts(96000, 96000, 0.3F, 0.1F, 1);
    for (std::size_t i = 6400; i < 8000; ++i) {
        in[i] = i % 8 < 4 ? 3e38F : -3e38F;
    }
    const std::vector<float> out = Suppressed(channel, plan, in);
    double energy = 0.0;
    for (std::size_t i = 48000; i < out.size(); ++i) {
        ASSERT_TRUE(std::isfinite(out[i])) << i;
        energy += static_cast<double>(out[i] * out[i]);
    }
    EXPECT_GT(energy / 48000.0, 1e-4);
}

}  // namespace

}  // namespace audio_filter::internal
