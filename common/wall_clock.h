#pragma once

#include <cstdint>

namespace audio_filter::internal {

/// The wall clock, for log lines and log file names.

/// A date and time of day in the local time zone.
struct LocalTime {
    int year;         ///< such as 2024
    int month;        ///< 1..12
    int day;          ///< 1..31
    int hour;         ///< 0..23
    int minute;       ///< 0..59
    int second;       ///< 0..60
    int millisecond;  ///< 0..999
};

LocalTime LocalTimeNow();

/// Seconds since 1970-01-01 00:00 UTC.
std::int64_t CalendarSecondsNow();

}  // namespace audio_filter::internal
