#pragma once

#include <new>
#include <string>

#include "log/media_process_log.h"
#include "log/pr_log.h"

namespace audio_filter::internal {

/// The format of the library's log lines. This call, in line 83,
///
///     LogLine(PROCESS_LOG_ERROR, {"AudioFilter::Init"}, "error code is %d", -1);
///
/// prints 2024-03-07 09:05:02.041:[ERROR]MediaProcessLog:AudioFilter::Init:83:error code is -1

/// The origin of a log line: the qualified function and the line tag. The tag is the source line of
/// the call unless the call passes a fixed one: hosts search their logs for the fixed tags (275 ..
/// 683), which are therefore part of the interface and unrelated to lines of these files.
struct LogSite {
    LogSite(const char* siteFunction, int siteLine = __builtin_LINE())
        : function(siteFunction), line(siteLine) {}

    const char* function;
    int line;
};

/// Date, level tag, module, function and line tag.
std::string LogPrefix(ProcessLogLevel level, const LogSite& site);

/// Dispatches a line to pr_log while logging is on; otherwise does nothing. When memory runs out,
/// the line is lost and processing continues.
/// @param level 1..4
/// @param args as for printf
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
