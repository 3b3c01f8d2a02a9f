#pragma once

#include <new>
#include <string>

#include "log/media_process_log.h"
#include "log/pr_log.h"

namespace audio_filter::internal {

/// The one form of the library's own log lines. This call, in line 83,
///
///     LogLine(PROCESS_LOG_ERROR, {"AudioFilter::Init"}, "error code is %d", -1);
///
/// prints 2024-03-07 09:05:02.041:[ERROR]MediaProcessLog:AudioFilter::Init:83:error code is -1

/// Where a line comes from: the qualified function, and the line tag, which is the site's own
/// source line unless another is given.
struct LogSite {
    LogSite(const char* siteFunction, int siteLine = __builtin_LINE())
        : function(siteFunction), line(siteLine) {}

    const char* function;
    int line;
};

/// Date, level tag, module word, function and line tag.
std::string LogPrefix(ProcessLogLevel level, const LogSite& site);

/// Sends a line to pr_log while logging is on; else nothing is built and nothing called. A line for
/// which there is no memory is lost: what it is about goes on.
/// @param level 1..4
/// @param args what printf takes
template <typename... Args>
void LogLine(ProcessLogLevel level, const LogSite& site, const char* format, Args... args) {
    if (!pr_log_enalbe) {
        return;
    }
    try {
        const std::string prefix = LogPrefix(level, site);
        switch (level) {
            case PROCESS_LOG_DEBUG: pr_log->Debug(prefix, format, args...); break;
            case PROCESS_LOG_INFO: pr_log->Info(prefix, format, args...); break;
            case PROCESS_LOG_WARN: pr_log->Warn(prefix, format, args...); break;
            case PROCESS_LOG_ERROR: pr_log->Error(prefix, format, args...); break;
        }
    } catch (const std::bad_alloc&) {
        return;
    }
}

}  // namespace audio_filter::internal
