#pragma once

#include <memory>
#include <string>

#include "log/media_process_log.h"

/// Logs a line at a position in the stream, if a LogFile exists.
/// @param level PROCESS_LOG_DEBUG or PROCESS_LOG_INFO
void Log(ProcessLogLevel level, double seconds, const std::string& text);

/// Names the recording in the log lines of this thread during its lifetime.
class LogLabel {
public:
    explicit LogLabel(const std::string& recording);
    ~LogLabel();
    LogLabel(const LogLabel&) = delete;
    LogLabel& operator=(const LogLabel&) = delete;
};

/// Writes log lines to a file or to standard error during its lifetime.
class LogFile {
public:
    /// @param path "-" for standard error. Symbolic links are followed; an existing file is
    ///        truncated and keeps its permissions. Throws Failure for anything but a regular file,
    ///        and for one that cannot be written.
    /// @param level the lowest level that is written
    LogFile(const std::string& path, ProcessLogLevel level);

    /// Closes the file; lines that were lost are no longer reported.
    ~LogFile();

    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// Ends logging. Throws Failure if any line could not be written.
    void Close();

private:
    class Lines;

    std::string mPath;
    std::unique_ptr<Lines> mLines;  ///< in place of the library's dispatcher; null when closed
};
