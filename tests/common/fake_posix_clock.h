#pragma once

#include <ctime>
#include <optional>

/// Stands between the library and the C library's clocks (the linker wraps the calls): passes them
/// on unless a test has set what they are to answer.
struct FakePosixClock {
    std::optional<timespec> now;       ///< what clock_gettime answers
    std::optional<clockid_t> asked;    ///< the clock that it was asked for last
    std::optional<std::time_t> time;   ///< what time answers
    std::optional<timespec> deadline;  ///< of the latest timed wait on a condition
    bool waitTimesOut = false;         ///< whether such a wait ends at once
};

FakePosixClock& ThePosixClock();
