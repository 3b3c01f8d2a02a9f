#pragma once

#include "common/wall_clock.h"

using namespace audio_filter::internal;

/// Replaces the wall clock in all log tests. It always returns the time that a test sets.
struct FakeWallClock {
    LocalTime local = {2024, 3, 7, 9, 5, 2, 41};
    std::int64_t seconds = 1'709'802'302;
    int reads = 0;
};

FakeWallClock& TheWallClock();
