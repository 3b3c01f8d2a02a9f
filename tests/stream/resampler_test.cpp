#include "stream/resampler.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

#include "signals.h"

namespace audio_filter::internal {

namespace {

std::vector<float> Resampled(Resampler& resampler, const std::vector<float>& in, std::size_t block,
                             double ratio) {
    std::vector<float> out;
    std::vector<float> piece(static_cast<std::size_t>(static_cast<double>(block) * ratio) + 2);
    for (std::size_t at = 0; at + block <= in.size(); at += block) {
        const std::size_t count = resampler.Process(std::span(in).subspan(at, block), piece);
        out.insert(out.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(count));
    }
    return out;
}

TEST(Resampler, IntegerRatiosGiveTheSameCountInEveryBlock) {
    for (const auto& [from, to] : {std::pair(1, 2), {1, 4}, {2, 1}, {3, 1}, {4, 1}}) {
        Resampler resampler(from, to);
        const auto block = static_cast<std::size_t>(320 * from / to);
        const std::vector<float> in(block == 0 ? 320 : block, 0.5F);
        std::vector<float> out(320);
        for (int i = 0; i < 100; ++i) {
            ASSERT_EQ(resampler.Process(in, out), 320U) << from << ":" << to;
        }
    }
}

TEST(Resampler, AToneBelow80PercentOfTheLowerBandKeepsItsLevelAndComesAfterTheToldDelay) {
    for (const auto& [from, to] : {std::pair(8000, 32000),
                                   {16000, 32000},
                                   {48000, 32000},
                                   {44100, 32000},
                                   {96000, 48000},
                                   {192000, 48000}}) {
        const double frequency = 0.4 * std::min(from, to);
        Resampler resampler(from, to);
        const std::vector<float> in = Tone(static_cast<std::size_t>(from), frequency, from, 0.5);
        const std::vector<float> out =
            Resampled(resampler, in, 160, static_cast<double>(to) / from);
        const double delay = static_cast<double>(resampler.Delay()) / from;
        for (std::size_t i = out.size() / 2; i < out.size(); ++i) {
            const double time = static_cast<double>(i) / to - delay;
            const double expected = 0.5 * std::sin(2.0 * std::numbers::pi * frequency * time);
            ASSERT_NEAR(static_cast<double>(out[i]), expected, 0.002)
                << from << ":" << to << " " << i;
        }
    }
}

TEST(Resampler, AToneAboveTheLowerBandFallsBelowMinus80DbFs) {
    for (const auto& [from, to] : {std::pair(48000, 32000), {96000, 48000}, {192000, 48000}}) {
        Resampler resampler(from, to);
        const std::vector<float> in = Tone(static_cast<std::size_t>(from), 0.58 * to, from, 0.5);
        const std::vector<float> out =
            Resampled(resampler, in, 160, static_cast<double>(to) / from);
        for (std::size_t i = out.size() / 2; i < out.size(); ++i) {
            ASSERT_LT(std::abs(out[i]), 1e-4F) << from << ":" << to;
        }
    }
}

TEST(Resampler, ResetForgetsThePastSamples) {
    Resampler used(1, 2);
    Resampler fresh(1, 2);
    const std::vector<float> noise = WhiteNoise(1600, 0.5F, 1);
    Resampled(used, noise, 160, 2.0);
    used.Reset();
    EXPECT_EQ(Resampled(used, noise, 160, 2.0), Resampled(fresh, noise, 160, 2.0));
}

}  // namespace

}  // namespace audio_filter::internal
