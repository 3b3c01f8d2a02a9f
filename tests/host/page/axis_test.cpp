#include "host/page/axis.h"

#include <gtest/gtest.h>

namespace {

std::string Labels(const std::vector<Tick>& ticks) {
    std::string labels;
    for (const Tick& tick : ticks) {
        labels += (labels.empty() ? "" : " ") + tick.label;
    }
    return labels;
}

TEST(Axis, TimesAreRoundAndAtMost8) {
    EXPECT_EQ(Labels(TimeTicks(17.3)), "0 s 5 s 10 s 15 s");
    EXPECT_EQ(Labels(TimeTicks(0.3)), "0 s 0.05 s 0.1 s 0.15 s 0.2 s 0.25 s 0.3 s");
    EXPECT_EQ(Labels(TimeTicks(3600.0)), "0 s 10:00 20:00 30:00 40:00 50:00 1:00:00");
    for (double seconds = 0.01; seconds < 1e6; seconds *= 1.07) {
        const std::vector<Tick> ticks = TimeTicks(seconds);
        EXPECT_GE(ticks.size(), 1U) << seconds;
        EXPECT_LE(ticks.size(), 8U) << seconds;
        EXPECT_LE(ticks.back().share, 1.0 + 1e-9) << seconds;
    }
}

TEST(Axis, NoTimeHasNoTicks) {
    EXPECT_EQ(TimeTicks(0.0).size(), 0U);
}

TEST(Axis, ValuesFrom0To22_05AreMarkedEvery5) {
    EXPECT_EQ(Labels(LinearTicks(0.0, 22.05, 6)), "0 5 10 15 20");
    EXPECT_EQ(Labels(LinearTicks(-100.0, -10.0, 7)), "-100 -80 -60 -40 -20");
    EXPECT_EQ(Labels(LinearTicks(-0.5, 0.5, 5)), "-0.5 0 0.5");
}

TEST(Axis, TimesAbove1MinuteHaveColons) {
    EXPECT_EQ(TimeText(59.994), "59.99 s");
    EXPECT_EQ(TimeText(59.999), "1:00");
    EXPECT_EQ(TimeText(3661.0), "1:01:01");
}

}  // namespace
