#include "common/wall_clock.h"

#include <gtest/gtest.h>

namespace {

TEST(WallClock, LocalTimeHasItsFieldsInRange) {
    const LocalTime now = LocalTimeNow();
    EXPECT_GE(now.year, 2024);
    EXPECT_TRUE(now.month >= 1 && now.month <= 12) << now.month;
    EXPECT_TRUE(now.day >= 1 && now.day <= 31) << now.day;
    EXPECT_TRUE(now.hour >= 0 && now.hour <= 23) << now.hour;
    EXPECT_TRUE(now.minute >= 0 && now.minute <= 59) << now.minute;
    EXPECT_TRUE(now.second >= 0 && now.second <= 60) << now.second;
    EXPECT_TRUE(now.millisecond >= 0 && now.millisecond <= 999) << now.millisecond;
}

TEST(WallClock, CalendarTimeCountsSecondsSince1970) {
    constexpr std::int64_t kFirstOf2024 = 1704067200;
    EXPECT_GE(CalendarSecondsNow(), kFirstOf2024);
}

}  // namespace
