#include "log/media_process_log.h"

#include "common/result_code.h"

#include <cstdarg>

namespace {

bool IsLevel(ProcessLogLevel level) {
    return level >= PROCESS_LOG_DEBUG && level <= PROCESS_LOG_ERROR;
}

}  // namespace

MediaProcessLog::MediaProcessLog() {
    process_lock_init(&mLock);
}

MediaProcessLog::~MediaProcessLog() {
    Uninit();
    process_lock_destroy(&mLock);
}

int MediaProcessLog::Init(ProcessLogLevel level, std::string path) {
    process_lock(&mLock);
    if (path.empty() || !IsLevel(level)) {
        return RESULT_INVALID;  // deliberately with the lock held
    }
    mInited = false;
    mLevel = level;
    CloseFile();
    mFile = std::fopen(path.c_str(), "w+");
    mInited = true;
    process_unlock(&mLock);
    return RESULT_OK;
}

bool MediaProcessLog::IsInited() {
    return mInited;
}

void MediaProcessLog::SetLogLevel(ProcessLogLevel level) {
    if (IsLevel(level)) {
        mLevel = level;
    }
}

bool MediaProcessLog::Uninit() {
    const ProcessAutolock hold(&mLock);
    mInited = false;
    mLevel = PROCESS_LOG_ERROR;
    CloseFile();
    return true;
}

int MediaProcessLog::WriteLog(ProcessLogLevel level, std::string format, ...) {
    process_lock(&mLock);
    // These three deliberately return with the lock held.
    if (level < mLevel) {
        return RESULT_OK;
    }
    if (mFile == nullptr || !mInited) {
        return RESULT_NOT_INITIALISED;
    }
    if (format.empty()) {
        return RESULT_BAD_ARGUMENT;
    }
    va_list args;
    va_start(args, format);  // after a class by value: supported by GCC and clang
    std::vfprintf(mFile, format.c_str(), args);
    va_end(args);
    std::fputc('\n', mFile);
    std::fflush(mFile);
    process_unlock(&mLock);
    return RESULT_OK;
}

void MediaProcessLog::CloseFile() {
    if (mFile != nullptr) {
        std::fclose(mFile);
        mFile = nullptr;
    }
}
