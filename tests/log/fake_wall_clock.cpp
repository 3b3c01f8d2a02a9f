#include "fake_wall_clock.h"

#include <atomic>

FakeWallClock& TheWallClock() {
    static FakeWallClock clock;
    return clock;
}

namespace audio_filter::internal {

LocalTime LocalTimeNow() {
    std::atomic_ref(TheWallClock().reads).fetch_add(1);  // several threads may log
    return TheWallClock().local;
}

std::int64_t CalendarSecondsNow() {
    std::atomic_ref(TheWallClock().reads).fetch_add(1);  // several threads may log
    return TheWallClock().seconds;
}

}  // namespace audio_filter::internal
