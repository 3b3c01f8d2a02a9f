#include "host/audio_format.h"

#include <gtest/gtest.h>

#include <cfenv>

namespace {

TEST(AudioFormat, Every16BitSampleSurvivesConversionToFloatAndBack) {
    for (int value = -32768; value <= 32767; ++value) {
        const auto sample = static_cast<short>(value);
        ASSERT_EQ(FromFloat<short>(ToFloat(sample)), sample);
    }
}

TEST(AudioFormat, FloatsBecome16BitRoundedAndSaturatedAndNaNBecomes0) {
    EXPECT_EQ(FromFloat<short>(0.5F / 32768.0F), 1);
    EXPECT_EQ(FromFloat<short>(-0.5F / 32768.0F), -1);
    EXPECT_EQ(FromFloat<short>(0.4F / 32768.0F), 0);
    EXPECT_EQ(FromFloat<short>(1.0F), 32767);
    EXPECT_EQ(FromFloat<short>(-1.0F), -32768);
    EXPECT_EQ(FromFloat<short>(INFINITY), 32767);
    EXPECT_EQ(FromFloat<short>(-INFINITY), -32768);
    EXPECT_EQ(FromFloat<short>(NAN), 0);
}

TEST(AudioFormat, NaNIsNeverRoundedToAnInteger) {
    volatile float nan = NAN;
    std::feclearexcept(FE_INVALID);
    volatile short sample = FromFloat<short>(nan);
    EXPECT_EQ(std::fetestexcept(FE_INVALID), 0);
    EXPECT_EQ(sample, 0);
}

TEST(AudioFormat, FloatsStayUnchanged) {
    EXPECT_EQ(FromFloat<float>(1.5F), 1.5F);
    EXPECT_EQ(ToFloat(1.5F), 1.5F);
}

}  // namespace
