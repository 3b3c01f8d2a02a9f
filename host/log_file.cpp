#include "host/log_file.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

#include "host/failure.h"
#include "host/regular_file.h"
#include "log/pr_log.h"

namespace {

thread_local std::string logLabel;  ///< before each line; empty for none

}  // namespace

LogLabel::LogLabel(const std::string& recording) {
    logLabel = Failure::Printable(recording) + ": ";
}

LogLabel::~LogLabel() {
    logLabel.clear();
}

/// Takes the place of the library's dispatcher, whose writers report no write errors.
class LogFile::Lines : public PRLog {
public:
    Lines(std::FILE* file, ProcessLogLevel level)
        : mFile(file), mLevel(level), mReplaced(std::exchange(pr_log, this)) {
        PR_LOG_ENABLE(true);
    }

    ~Lines() override {
        PR_LOG_ENABLE(false);
        pr_log = mReplaced;
        CloseFile();
    }

    /// @return the error of the first lost line; 0 for none
    int CloseFile() {
        if (mFile != nullptr && mFile != stderr) {
            NoteError(std::fclose(mFile) == 0);
        }
        mFile = nullptr;
        return mError;
    }

    void Info(std::string prefix, const char* format, ...) override {
        va_list args;
        va_start(args, format);
        Write(PROCESS_LOG_INFO, prefix, format, args);
        va_end(args);
    }
    void Debug(std::string prefix, const char* format, ...) override {
        va_list args;
        va_start(args, format);
        Write(PROCESS_LOG_DEBUG, prefix, format, args);
        va_end(args);
    }
    void Warn(std::string prefix, const char* format, ...) override {
        va_list args;
        va_start(args, format);
        Write(PROCESS_LOG_WARN, prefix, format, args);
        va_end(args);
    }
    void Error(std::string prefix, const char* format, ...) override {
        va_list args;
        va_start(args, format);
        Write(PROCESS_LOG_ERROR, prefix, format, args);
        va_end(args);
    }

private:
    /// One write a line, so that lines of parallel jobs on one terminal stay whole.
    void Write(ProcessLogLevel level, const std::string& prefix, const char* format, va_list args) {
        if (level < mLevel) {
            return;
        }
        char message[1024];  // no line of the library is longer
        std::vsnprintf(message, sizeof(message), format, args);
        const std::string line = logLabel + prefix + ":" + message + "\n";
        const std::lock_guard<std::mutex> lock(mMutex);
        NoteError(std::fwrite(line.data(), 1, line.size(), mFile) == line.size() &&
                  std::fflush(mFile) == 0);
    }

    void NoteError(bool written) {
        if (!written && mError == 0) {
            mError = errno;
        }
    }

    std::FILE* mFile;
    ProcessLogLevel mLevel;
    PRLog* mReplaced;
    std::mutex mMutex;
    int mError = 0;
};

void Log(ProcessLogLevel level, double seconds, const std::string& text) {
    if (!pr_log_enalbe || pr_log == nullptr) {
        return;
    }
    if (level == PROCESS_LOG_DEBUG) {
        pr_log->Debug("audio-filter", "%.3f s: %s", seconds, text.c_str());
    } else {
        pr_log->Info("audio-filter", "%.3f s: %s", seconds, text.c_str());
    }
}

LogFile::LogFile(const std::string& path, ProcessLogLevel level)
    : mPath(path == "-" ? "standard error" : path),
      mLines(std::make_unique<Lines>(path == "-" ? stderr : OpenRegularFile(path), level)) {}

LogFile::~LogFile() = default;

void LogFile::Close() {
    const std::unique_ptr<Lines> lines = std::move(mLines);
    const int error = lines ? lines->CloseFile() : 0;
    if (error != 0) {
        throw Failure(mPath, "cannot be written", error);
    }
}
