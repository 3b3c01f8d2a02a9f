#include "units/mix_limiter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

using namespace audio_filter::internal;

namespace {

/// The limiter from a table of its slopes and where they start.
int PlainLimit(int sum) {
    const int a = std::abs(sum);
    const int within = a % 32768;
    int y = 0;
    if (a < 32768) {
        y = within * 7 / 8;
    } else if (a < 65536) {
        y = 28672 + within * 7 / 64;
    } else if (a < 98304) {
        y = 32256 + within * 7 / 512;
    } else if (a < 131072) {
        y = 32704 + within * 7 / 4096;
    } else {
        y = 32760 + within * 7 / 32768;
    }
    return sum < 0 ? -y : y;
}

TEST(MixLimiter, All131072SumsOfTwo16BitExtremesFollowThePlainModel) {
    for (int sum = -65536; sum < 65536; ++sum) {
        ASSERT_EQ(LimitSum(sum), PlainLimit(sum)) << sum;
    }
}

TEST(MixLimiter, EverySumOfSixteenSourcesIsOddAndNeverReachesFullScale) {
    for (int sum = 0; sum <= 16 * 32768; ++sum) {
        ASSERT_EQ(LimitSum(sum), PlainLimit(sum)) << sum;
        ASSERT_EQ(LimitSum(-sum), -LimitSum(sum)) << sum;
        ASSERT_LE(LimitSum(sum), 32766) << sum;
    }
}

TEST(MixLimiter, IsMonotonicBelowFiveTimesFullScale) {
    for (int sum = 1; sum < 163840; ++sum) {
        ASSERT_GE(LimitSum(sum), LimitSum(sum - 1)) << sum;
    }
}

TEST(MixLimiter, From163840OnTheOutputCyclesWithin32760To32766) {
    EXPECT_EQ(LimitSum(163839), 32766);
    EXPECT_EQ(LimitSum(163840), 32760);
    EXPECT_EQ(LimitSum(196607), 32766);
    EXPECT_EQ(LimitSum(196608), 32760);
    EXPECT_EQ(LimitSum(524288), 32760);
}

TEST(MixLimiter, SegmentsStartAt28672_32256_32704_32760) {
    EXPECT_EQ(LimitSum(32767), 28671);
    EXPECT_EQ(LimitSum(32768), 28672);
    EXPECT_EQ(LimitSum(65535), 32255);
    EXPECT_EQ(LimitSum(65536), 32256);
    EXPECT_EQ(LimitSum(98303), 32703);
    EXPECT_EQ(LimitSum(98304), 32704);
    EXPECT_EQ(LimitSum(131071), 32759);
    EXPECT_EQ(LimitSum(131072), 32760);
}

TEST(MixerSamples, FloatsAreTruncatedTowardsZero) {
    EXPECT_EQ(ToMixerSample(1.0F), 32767);
    EXPECT_EQ(ToMixerSample(-1.0F), -32767);
    EXPECT_EQ(ToMixerSample(0.00009F), 2);
    EXPECT_EQ(ToMixerSample(-0.00009F), -2);
    EXPECT_EQ(ToMixerSample(0.00003F), 0);
}

TEST(MixerSamples, FloatsBeyondFullScaleWrapThrough16Bits) {
    EXPECT_EQ(ToMixerSample(1.5F), static_cast<short>(static_cast<std::uint16_t>(49150)));
    EXPECT_EQ(ToMixerSample(-1.5F), static_cast<short>(static_cast<std::uint16_t>(65536 - 49150)));
    EXPECT_EQ(ToMixerSample(2.0F), -2);
    EXPECT_EQ(ToMixerSample(65536.0F), 0);
}

TEST(MixerSamples, SamplesThatAreNotFiniteOrDoNotFit32BitsEnterAs0) {
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(ToMixerSample(NAN), 0);
    EXPECT_EQ(ToMixerSample(infinity), 0);
    EXPECT_EQ(ToMixerSample(-infinity), 0);
    EXPECT_EQ(ToMixerSample(65540.0F), 0);
    EXPECT_EQ(ToMixerSample(-65540.0F), 0);
    EXPECT_EQ(ToMixerSample(3e38F), 0);
    // 2^31 exactly once scaled. A constant expression cannot overflow in the conversion.
    constexpr short kAtTheBound = ToMixerSample(65538.0F);
    EXPECT_EQ(kAtTheBound, 0);
    // The last float whose product still fits, 2147483392, and its low 16 bits.
    EXPECT_EQ(ToMixerSample(65537.9921875F), -256);
    EXPECT_EQ(ToMixerSample(-65537.9921875F), 256);
}

TEST(MixerSamples, AFloatLeavesDividedBy32767AndStaysBelowFullScale) {
    EXPECT_EQ(FromMixerSample<float>(28671), 28671.0F / 32767.0F);
    EXPECT_LT(static_cast<double>(FromMixerSample<float>(32766)), 0.99999999);
    EXPECT_GT(static_cast<double>(FromMixerSample<float>(-32766)), -0.99999999);
}

TEST(MixerSamples, A16BitSampleEntersAndLeavesUnchanged) {
    EXPECT_EQ(ToMixerSample(static_cast<short>(-32768)), -32768);
    EXPECT_EQ(FromMixerSample<short>(-123), -123);
}

TEST(MixerSamples, TheScalingIsDoneInSinglePrecision) {
    // 32766 / 32767 rounds down to a float; only the rounded product is an integer again.
    int different = 0;
    for (int n = -32767; n <= 32767; ++n) {
        const float x = static_cast<float>(n) / 32767.0F;
        const volatile float product = x * 32767.0F;
        ASSERT_EQ(ToMixerSample(x), static_cast<short>(product)) << n;
        different +=
            ToMixerSample(x) != static_cast<short>(static_cast<double>(x) * 32767.0) ? 1 : 0;
    }
    EXPECT_GT(different, 1000);
}

}  // namespace
