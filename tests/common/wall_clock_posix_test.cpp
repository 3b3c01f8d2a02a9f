#include <gtest/gtest.h>

#include <cstdlib>
#include <tuple>

#include "common/wall_clock.h"
#include "fake_posix_clock.h"

using namespace audio_filter::internal;

namespace {

std::tuple<int, int, int, int, int, int, int> FieldsAt(std::time_t seconds, long nanoseconds,
                                                       const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
    ThePosixClock() = {};
    ThePosixClock().now = timespec{seconds, nanoseconds};
    const LocalTime t = LocalTimeNow();
    ThePosixClock() = {};
    return {t.year, t.month, t.day, t.hour, t.minute, t.second, t.millisecond};
}

TEST(WallClockPosix, LocalTimeFollowsTheTimeZoneToTheMillisecond) {
    constexpr std::time_t kMarch = 1709802302;  // 2024-03-07 09:05:02 UTC
    EXPECT_EQ(FieldsAt(kMarch, 41'999'999, "UTC0"), std::make_tuple(2024, 3, 7, 9, 5, 2, 41));
    EXPECT_EQ(FieldsAt(kMarch, 999'999'999, "XYZ-14"), std::make_tuple(2024, 3, 7, 23, 5, 2, 999));
    constexpr std::time_t kNewYear = 1767225599;  // 2025-12-31 23:59:59 UTC
    EXPECT_EQ(FieldsAt(kNewYear, 0, "UTC0"), std::make_tuple(2025, 12, 31, 23, 59, 59, 0));
    EXPECT_EQ(FieldsAt(kNewYear, 0, "XYZ-1"), std::make_tuple(2026, 1, 1, 0, 59, 59, 0));
}

TEST(WallClockPosix, CalendarTimeIsInSecondsSinceTheEpoch) {
    ThePosixClock() = {};
    ThePosixClock().time = 5'000'000'000;
    EXPECT_EQ(CalendarSecondsNow(), 5'000'000'000);
    ThePosixClock() = {};
}

}  // namespace
