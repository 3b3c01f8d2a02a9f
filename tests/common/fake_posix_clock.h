#pragma once

#include <ctime>
#include <optional>

/// Replaces the C library's clock calls, which the linker wraps. A call goes through to the C
/// library unless a test sets its result here.
struct FakePosixClock {
    std::optional<timespec> now;       ///< result of clock_gettime
    std::optional<clockid_t> read;     ///< clock that clock_gettime read last
    std::optional<std::time_t> time;   ///< result of time
    std::optional<timespec> deadline;  ///< of the last timed wait on a condition
    bool waitTimesOut = false;         ///< makes a timed wait end immediately
};

FakePosixClock& ThePosixClock();
