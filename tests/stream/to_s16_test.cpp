#include "stream/to_s16.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "signals.h"

namespace audio_filter::internal {

namespace {

TEST(ToS16, All65536ValuesOf16BitsAreConvertedExactly) {
    std::vector<float> in;
    for (int value = -32768; value <= 32767; ++value) {
        in.push_back(static_cast<float>(value) / 32768.0F);
    }
    std::vector<short> out(in.size());
    ToS16(1).Convert(in, out);
    for (int value = -32768; value <= 32767; ++value) {
        ASSERT_EQ(out[static_cast<std::size_t>(value + 32768)], value);
    }
}

TEST(ToS16, DitherLeavesAMeanErrorBelowAHundredthAndAPowerOfAQuarterOfASquaredStep) {
    // Triangular dither of two steps: the error is independent of the signal, 1/4 of a squared step.
    for (const float offset : {0.0F, 0.25F, 0.5F, 0.75F}) {
        ToS16 convert(7);
        std::vector<float> in(100000, (100.0F + offset) / 32768.0F);
        in[0] = 0.3F / 32768.0F;  // not a 16-bit value
        std::vector<short> out(in.size());
        convert.Convert(in, out);
        double sum = 0.0;
        double power = 0.0;
        for (std::size_t i = 1; i < in.size(); ++i) {
            const double error = out[i] - static_cast<double>(in[i]) * 32768.0;
            sum += error;
            power += error * error;
        }
        EXPECT_NEAR(sum / 1e5, 0.0, 0.01) << offset;
        EXPECT_NEAR(power / 1e5, 0.25, 0.01) << offset;
    }
}

TEST(ToS16, SamplesBeyondFullScaleAreClippedAndThoseThatAreNotFiniteBecome0) {
    const float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> in = {1.5F, -1.5F, 1e30F, -1e30F, infinity, -infinity, std::nanf("")};
    std::vector<short> out(in.size());
    ToS16(1).Convert(in, out);
    EXPECT_EQ(out, (std::vector<short>{32767, -32768, 32767, -32768, 0, 0, 0}));
}

TEST(ToS16, TheSameSeedGivesTheSameDitherAndAnotherOneAnother) {
    const std::vector<float> in = WhiteNoise(1000, 0.5F, 1);
    std::vector<short> first(1000);
    std::vector<short> second(1000);
    std::vector<short> other(1000);
    ToS16(1).Convert(in, first);
    ToS16(1).Convert(in, second);
    ToS16(2).Convert(in, other);
    EXPECT_EQ(first, second);
    EXPECT_NE(first, other);
}

TEST(ToS16, NearestS16RoundsToNearestAndTiesToEven) {
    for (const auto& [steps, rounded] : {std::pair(0.5F, 0),
                                         {1.5F, 2},
                                         {2.5F, 2},
                                         {-0.5F, 0},
                                         {-1.5F, -2},
                                         {0.51F, 1},
                                         {32767.4F, 32767},
                                         {32767.9F, 32767},
                                         {-32768.5F, -32768}}) {
        EXPECT_EQ(NearestS16(steps / 32768.0F), rounded) << steps;
    }
    EXPECT_EQ(NearestS16(std::nanf("")), 0);
}

}  // namespace

}  // namespace audio_filter::internal
