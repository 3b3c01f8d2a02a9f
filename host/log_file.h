#pragma once

#include <string>

/// Writes the library's log lines to a file during its lifetime. Throws Failure if the file cannot
/// be written.
class LogFile {
public:
    explicit LogFile(const std::string& path);
    ~LogFile();
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

private:
    std::string mPath;
    std::string mPrefix;  ///< of the writer's temporary file
    int mId;
};
