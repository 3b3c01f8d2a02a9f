#include "log/pr_log.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>

#include "common/wall_clock.h"
#include "log/log_output.h"
#include "log/media_process_log.h"
#include "log/pr_console_log_writer.h"
#include "log/pr_file_log_writer.h"

using namespace audio_filter::internal;

PRLog* pr_log = new (std::nothrow) PRLog;
bool pr_log_enalbe = false;

namespace {

template <typename Writer>
bool DestroyAs(PRLogWriter* writer) {
    auto* own = dynamic_cast<Writer*>(writer);
    if (own != nullptr) {
        own->Writer::~Writer();
    }
    return own != nullptr;
}

/// Writers have no virtual destructor, and the file writer owns strings: each is destroyed as what
/// it is, then its storage is released.
struct ReleaseWriter {
    void operator()(PRLogWriter* writer) const {
        writer->Destroy();
        void* storage = dynamic_cast<void*>(writer);
        if (!DestroyAs<PRFileLogWriter>(writer)) {
            DestroyAs<PRConsoleLogWriter>(writer);
        }
        ::operator delete(storage);
    }
};

using OwnedWriter = std::unique_ptr<PRLogWriter, ReleaseWriter>;

OwnedWriter MakeWriter(ProcessLogType type, int level) {
    if (type == PROCESS_LOG_FILE) {
        return OwnedWriter(new PRFileLogWriter(level));
    }
    return OwnedWriter(new PRConsoleLogWriter(level));
}

std::string FormatDate(const char* format) {
    const LocalTime now = LocalTimeNow();
    char text[255];
    std::snprintf(text, sizeof(text), format, now.year, now.month, now.day, now.hour, now.minute,
                  now.second, now.millisecond);
    return text;
}

}  // namespace

void PR_LOG_ENABLE(bool enable) {
    pr_log_enalbe = enable;
}

int GeneratePRLogId() {
    static std::uint32_t next = 0;
    return static_cast<int>(next++);
}

std::string GetPRFormatDate() {
    return FormatDate("%d-%02d-%02d %02d:%02d:%02d.%03d");
}

std::string GetPRFormatDate2() {
    return FormatDate("%d_%02d_%02d_%02d_%02d_%02d_%03d");
}

std::string int2str_pr(int number) {
    return std::to_string(number);
}

PRLog::PRLog() {
    process_lock_init(&mLock);
}

PRLog::~PRLog() {
    {
        const ProcessAutolock hold(&mLock);
        ReleaseAll();
    }
    process_lock_destroy(&mLock);
}

int PRLog::AddLog(ProcessLogType type, void* param, int level) {
    const ProcessAutolock hold(&mLock);
    if (type == PROCESS_LOG_UNSUPPORTED) {
        return -1;
    }
    if (type != PROCESS_LOG_CONSOLE && type != PROCESS_LOG_FILE) {
        std::fprintf(stderr, "Log Type unrecgnized LogType=%d", type);
        return -1;
    }
    try {
        OwnedWriter writer = MakeWriter(type, level);
        writer->Init(param);
        mWriters.push_back(writer.get());
        return writer.release()->GetId();
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

int PRLog::RemoveLog(int id) {
    const ProcessAutolock hold(&mLock);
    const auto position = Find(id);
    if (position == mWriters.end()) {
        return -1;
    }
    const OwnedWriter writer(*position);
    mWriters.erase(position);
    return 0;
}

int PRLog::SetLogLevel(int id, int level) {
    const ProcessAutolock hold(&mLock);
    const auto position = Find(id);
    return position == mWriters.end() ? -1 : (*position)->SetLevel(level);
}

int PRLog::RemoveAllLog() {
    const ProcessAutolock hold(&mLock);
    ReleaseAll();
    return 0;
}

void PRLog::Info(std::string prefix, const char* format, ...) {
    va_list args;
    va_start(args, format);
    Dispatch(PROCESS_LOG_INFO, prefix, format, args);
    va_end(args);
}

void PRLog::Debug(std::string prefix, const char* format, ...) {
    va_list args;
    va_start(args, format);
    Dispatch(PROCESS_LOG_DEBUG, prefix, format, args);
    va_end(args);
}

void PRLog::Warn(std::string prefix, const char* format, ...) {
    va_list args;
    va_start(args, format);
    Dispatch(PROCESS_LOG_WARN, prefix, format, args);
    va_end(args);
}

void PRLog::Error(std::string prefix, const char* format, ...) {
    va_list args;
    va_start(args, format);
    Dispatch(PROCESS_LOG_ERROR, prefix, format, args);
    va_end(args);
}

PRLog::Writers::iterator PRLog::Find(int id) {
    return std::find_if(mWriters.begin(), mWriters.end(),
                        [id](PRLogWriter* writer) { return writer->GetId() == id; });
}

/// Every writer consumes the list it gets, so each gets a copy of its own.
void PRLog::Dispatch(int level, const std::string& prefix, const char* format, va_list args) {
    const ProcessAutolock hold(&mLock);
    for (PRLogWriter* writer : mWriters) {
        va_list copy;
        va_copy(copy, args);
        writer->WriteLog(level, prefix.c_str(), format, PackArguments(copy));
        va_end(copy);
    }
}

void PRLog::ReleaseAll() {
    for (PRLogWriter* writer : mWriters) {
        const OwnedWriter owned(writer);
    }
    mWriters.clear();
}
