#include "log/pr_log.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <new>

#include "common/result_code.h"
#include "common/wall_clock.h"
#include "log/log_output.h"
#include "log/media_process_log.h"
#include "log/pr_console_log_writer.h"
#include "log/pr_file_log_writer.h"

using namespace audio_filter::internal;

constinit PRLog* pr_log = nullptr;
constinit bool pr_log_enalbe = false;

namespace {

/// Ahead of the global objects of a host that links the library statically.
struct CreateDispatcher {
    CreateDispatcher() { pr_log = new (std::nothrow) PRLog; }
};
[[gnu::init_priority(101)]] const CreateDispatcher gCreateDispatcher;

template <typename Writer>
PRLogWriter* Create(int level) {
    return new Writer(level);
}

/// @return false for a writer of another class
template <typename Writer>
bool Delete(PRLogWriter* writer) {
    auto* own = dynamic_cast<Writer*>(writer);
    if (own == nullptr) {
        return false;
    }
    own->Writer::~Writer();
    ::operator delete(own);
    return true;
}

/// Writers have no virtual destructor, so a type that can be created names its deletion, too.
struct WriterType {
    ProcessLogType type;
    PRLogWriter* (*create)(int level);
    bool (*deleteIfOwn)(PRLogWriter* writer);
};

template <typename Writer>
constexpr WriterType TypeOf(ProcessLogType type) {
    return {type, &Create<Writer>, &Delete<Writer>};
}

constexpr WriterType kWriterTypes[] = {TypeOf<PRConsoleLogWriter>(PROCESS_LOG_CONSOLE),
                                       TypeOf<PRFileLogWriter>(PROCESS_LOG_FILE)};

struct ReleaseWriter {
    void operator()(PRLogWriter* writer) const {
        writer->Destroy();
        for (const WriterType& entry : kWriterTypes) {
            if (entry.deleteIfOwn(writer)) {
                return;
            }
        }
        ::operator delete(dynamic_cast<void*>(writer));  // a writer that AddLog did not create
    }
};

using OwnedWriter = std::unique_ptr<PRLogWriter, ReleaseWriter>;

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
        return RESULT_FAILURE;
    }
    const auto* entry =
        std::find_if(std::begin(kWriterTypes), std::end(kWriterTypes),
                     [type](const WriterType& candidate) { return candidate.type == type; });
    if (entry == std::end(kWriterTypes)) {
        std::fprintf(stderr, "Log Type unrecgnized LogType=%d", type);
        return RESULT_FAILURE;
    }
    try {
        OwnedWriter writer(entry->create(level));
        writer->Init(param);
        mWriters.push_back(writer.get());
        return writer.release()->GetId();
    } catch (const std::bad_alloc&) {
        return RESULT_FAILURE;
    }
}

int PRLog::RemoveLog(int id) {
    const ProcessAutolock hold(&mLock);
    const auto position = Find(id);
    if (position == mWriters.end()) {
        return RESULT_FAILURE;
    }
    const OwnedWriter writer(*position);
    mWriters.erase(position);
    return RESULT_OK;
}

int PRLog::SetLogLevel(int id, int level) {
    const ProcessAutolock hold(&mLock);
    const auto position = Find(id);
    return position == mWriters.end() ? RESULT_FAILURE : (*position)->SetLevel(level);
}

int PRLog::RemoveAllLog() {
    const ProcessAutolock hold(&mLock);
    ReleaseAll();
    return RESULT_OK;
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

/// A writer consumes its argument list, so each gets a copy.
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
