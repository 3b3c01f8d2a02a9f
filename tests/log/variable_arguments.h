#pragma once

#include <cstdarg>

#include "log/log_output.h"
#include "log/pr_log_writer.h"

using namespace audio_filter::internal;

/// Calls a writer with a variable-argument list, as the dispatcher does.
inline int WriteTo(PRLogWriter& writer, int level, const char* prefix, const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = writer.WriteLog(level, prefix, format, PackArguments(args));
    va_end(args);
    return result;
}
