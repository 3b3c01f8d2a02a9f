#include "host/loudness_gain.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr double kNone = -std::numeric_limits<double>::infinity();

TEST(LoudnessGain, IsTheDistanceToTheTarget) {
    EXPECT_DOUBLE_EQ(ChooseGain(-20.0, -6.0, -16.0).db, 4.0);
    EXPECT_DOUBLE_EQ(ChooseGain(-12.0, 0.5, -23.0).db, -11.0);
    EXPECT_EQ(ChooseGain(-20.0, -6.0, -16.0).note, "");
}

TEST(LoudnessGain, StopsWhereTheTruePeakReachesMinus1AndSaysSo) {
    const LoudnessGain gain = ChooseGain(-20.0, -3.0, -16.0);
    EXPECT_LE(-3.0 + gain.db, -1.0);
    EXPECT_GE(-3.0 + gain.db, -1.02);
    EXPECT_EQ(
        gain.note,
        "the loudness is -18.0 LUFS instead of -16.0: more would raise the true peak above -1 "
        "dBTP");
    EXPECT_LE(ChooseGain(-20.0, 2.0, -20.0).db, -3.0) << "also where it is too high already";
}

TEST(LoudnessGain, SilenceStaysAsItIs) {
    const LoudnessGain gain = ChooseGain(kNone, kNone, -16.0);
    EXPECT_EQ(gain.db, 0.0);
    EXPECT_EQ(gain.note, "the loudness stays as it is: silence, or shorter than 0.4 s");
}

}  // namespace
