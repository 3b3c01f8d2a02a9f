#pragma once

#include <string>

/// Sends the library's own log lines to a file for as long as it lives. Throws Failure when the
/// file cannot be written.
class LogFile {
public:
    explicit LogFile(const std::string& path);
    ~LogFile();
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

private:
    std::string mPath;
    std::string mPrefix;  ///< what the writer is told, while it writes
    int mId;
};
