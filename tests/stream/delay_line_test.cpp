#include "stream/delay_line.h"

#include <gtest/gtest.h>

#include <vector>

namespace audio_filter::internal {

namespace {

std::vector<float> Ramp(std::size_t length) {
    std::vector<float> ramp(length);
    for (std::size_t i = 0; i < length; ++i) {
        ramp[i] = static_cast<float>(i + 1);
    }
    return ramp;
}

TEST(DelayLine, DelaysBy0And1And197And1000SamplesInBlocksOf1To64) {
    for (const std::size_t delay : {0U, 1U, 63U, 64U, 65U, 197U, 1000U}) {
        DelayLine line(delay, 64);
        const std::vector<float> in = Ramp(3000);
        std::vector<float> out(in.size());
        std::size_t length = 1;
        for (std::size_t at = 0; at < in.size(); at += length) {
            length = std::min(at % 64 + 1, in.size() - at);
            line.Process(std::span(in).subspan(at, length), std::span(out).subspan(at, length));
        }
        for (std::size_t i = 0; i < in.size(); ++i) {
            ASSERT_EQ(out[i], i < delay ? 0.0F : in[i - delay]) << delay << " at " << i;
        }
    }
}

TEST(DelayLine, ResetForgetsThePastSamples) {
    DelayLine line(10, 8);
    std::vector<float> in = Ramp(8);
    std::vector<float> out(8);
    line.Process(in, out);
    line.Process(in, out);
    line.Reset();
    line.Process(in, out);
    EXPECT_EQ(out, std::vector<float>(8));
    line.Process(in, out);
    EXPECT_EQ(out, (std::vector<float>{0, 0, 1, 2, 3, 4, 5, 6}));
}

}  // namespace

}  // namespace audio_filter::internal
