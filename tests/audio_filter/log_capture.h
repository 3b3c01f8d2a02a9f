#pragma once

#include <fstream>
#include <string>
#include <vector>

#include "log/pr_file_log_writer.h"
#include "log/pr_log.h"
#include "support/temp_dir.h"

/// Enables logging at all levels during its lifetime, and returns the lines without their dates.
/// Source lines can be masked:
///     [ERROR]MediaProcessLog:AudioFilter::Init:*:AGC init error, error code is 3
class LogCapture {
public:
    LogCapture() {
        PRFileLogParam param = {mDir.File("log"), 1, 0};
        pr_log->AddLog(PROCESS_LOG_FILE, &param, 1);
        PR_LOG_ENABLE(true);
    }
    ~LogCapture() {
        PR_LOG_ENABLE(false);
        pr_log->RemoveAllLog();
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// Lines since the last call. The source line tags of Init, Clear and SetMethod are masked.
    std::vector<std::string> Lines() {
        std::vector<std::string> lines;
        std::ifstream file(mDir.File("log_0"), std::ios::binary);
        file.seekg(mRead);
        for (std::string line; std::getline(file, line);) {
            mRead = file.tellg();
            if (line.back() == '\r') {  // a Windows line end
                line.pop_back();
            }
            lines.push_back(Masked(line.substr(line.find('['))));
        }
        return lines;
    }

private:
    static std::string Masked(std::string line) {
        for (const std::string function :
             {"AudioFilter::Init:", "AudioFilter::Clear:", "AudioFilter::SetMethod:"}) {
            const std::size_t found = line.find(function);
            if (found != std::string::npos) {
                const std::size_t tag = found + function.size();
                line = line.substr(0, tag).append("*").append(line.substr(line.find(':', tag)));
            }
        }
        return line;
    }

    TempDir mDir;
    std::streamoff mRead = 0;
};
