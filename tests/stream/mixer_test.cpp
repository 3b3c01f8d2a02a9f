#include "stream/mixer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "units/mix_limiter.h"

namespace audio_filter::internal {

namespace {

TEST(Mixer, EverySumOf16BitSamplesBelow5TimesFullScaleEqualsTheLimiterOfAudioMixing) {
    for (int sum = -163839; sum <= 163839; ++sum) {
        const float expected = static_cast<float>(LimitSum(sum)) / 32768.0F;
        ASSERT_EQ(LimitMixS16(static_cast<double>(sum) / 32768.0), expected) << sum;
    }
}

TEST(Mixer, TheLimiterIsOddNeverFallsAndStaysBelowFullScale) {
    double last = 0.0;
    for (double sum = 0.0; sum < 20.0; sum += 0.001) {
        const double limited = LimitMix(sum);
        ASSERT_GE(limited, last) << sum;
        ASSERT_LT(limited, 1.0) << sum;
        ASSERT_EQ(LimitMix(-sum), -limited) << sum;
        last = limited;
    }
    EXPECT_EQ(LimitMix(1.0), 0.875);
    EXPECT_NEAR(LimitMix(1e-10), 0.875e-10, 1e-15);
}

TEST(Mixer, ASumThatIsNotFiniteBecomes0) {
    for (const double sum : {std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity(), std::nan("")}) {
        EXPECT_EQ(LimitMix(sum), 0.0);
        EXPECT_EQ(LimitMixS16(sum), 0.0F);
    }
}

}  // namespace

}  // namespace audio_filter::internal
