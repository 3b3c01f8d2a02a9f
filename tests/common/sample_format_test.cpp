#include "common/sample_format.h"

#include <gtest/gtest.h>

#include <cstdint>

using namespace audio_filter::internal;

namespace {

SampleFmt Format(int value) {
    return static_cast<SampleFmt>(value);
}

TEST(SampleFormat, ByteSizesOfFormats0To9Are1_2_4_4_8Twice) {
    const int expected[10] = {1, 2, 4, 4, 8, 1, 2, 4, 4, 8};
    for (int value = 0; value < 10; ++value) {
        EXPECT_EQ(SampleByteSize(Format(value)), expected[value]) << value;
    }
}

TEST(SampleFormat, ByteSizeOfMinus1And10AndAnyNegativeFormatIs0) {
    for (const int value : {-1, 10, -2, -1000, 11, 1000, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(SampleByteSize(Format(value)), 0) << value;
    }
}

TEST(SampleFormat, ExactlyTheFormats5To9ArePlanar) {
    for (int value = -3; value < 14; ++value) {
        EXPECT_EQ(IsPlanar(Format(value)), value >= 5 && value <= 9) << value;
    }
}

TEST(SampleFormat, Formats1And6Are16BitAnd3And8AreFloat) {
    for (int value = -3; value < 14; ++value) {
        EXPECT_EQ(IsS16(Format(value)), value == 1 || value == 6) << value;
        EXPECT_EQ(IsFloat(Format(value)), value == 3 || value == 8) << value;
    }
}

}  // namespace
