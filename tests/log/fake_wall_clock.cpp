#include "fake_wall_clock.h"

FakeWallClock& TheWallClock() {
    static FakeWallClock clock;
    return clock;
}

LocalTime LocalTimeNow() {
    ++TheWallClock().reads;
    return TheWallClock().local;
}

std::int64_t CalendarSecondsNow() {
    ++TheWallClock().reads;
    return TheWallClock().seconds;
}
