#include <windows.h>

#include <ctime>

#include "common/wall_clock.h"

namespace audio_filter::internal {

LocalTime LocalTimeNow() {
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    return {now.wYear,   now.wMonth,  now.wDay,         now.wHour,
            now.wMinute, now.wSecond, now.wMilliseconds};
}

std::int64_t CalendarSecondsNow() {
    return _time64(nullptr);
}

}  // namespace audio_filter::internal
