#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>
#include <vector>

#include "common/export.h"
#include "common/process_lock.h"
#include "log/pr_log_writer.h"

/// The kinds of writers that PRLog::AddLog is asked for.
enum ProcessLogType : std::int32_t {
    PROCESS_LOG_CONSOLE = 0,     ///< PRConsoleLogWriter
    PROCESS_LOG_FILE = 1,        ///< PRFileLogWriter
    PROCESS_LOG_UNSUPPORTED = 2  ///< known, and not built here
};

/// Hands every message to each of its writers, which apply their own levels. The library logs to
/// the one instance in `pr_log`, and only while `pr_log_enalbe` is set:
///
///     PRConsoleLogParam console = {0};
///     pr_log->AddLog(PROCESS_LOG_CONSOLE, &console, 2);
///     PR_LOG_ENABLE(true);
///
/// Holds its own lock in every operation: writers never see two messages at once. The virtual
/// operations keep their order, which callers across the library boundary rely on.
class AUDIO_FILTER_API PRLog {
public:
    /// [setup] Without writers.
    PRLog();
    PRLog(const PRLog&) = delete;
    PRLog& operator=(const PRLog&) = delete;

    /// [setup] Destroys and releases every writer.
    virtual ~PRLog();

    /// [any] Adds a writer and initialises it. One whose Init fails is added all the same. Ids are
    /// not atomic: not beside another thread that makes a writer elsewhere.
    /// @param param parameter block of the kind: PRConsoleLogParam or PRFileLogParam
    /// @param level 1..4, the lowest that the writer prints
    /// @return the writer's id; -1 for another kind, and when memory runs out
    virtual int AddLog(ProcessLogType type, void* param, int level);

    /// [any] Destroys and releases a writer.
    /// @return 0, or -1 for an unknown id
    virtual int RemoveLog(int id);

    /// [any]
    /// @return what the writer answers, or -1 for an unknown id
    virtual int SetLogLevel(int id, int level);

    /// [any] Destroys and releases every writer.
    /// @return 0
    virtual int RemoveAllLog();

    /// [any] Sends a message of level 2, 1, 3 or 4. Writers print to files and streams: an audio
    /// thread that must not wait keeps away.
    /// @param format and what follows: as for printf
    virtual void Info(std::string prefix, const char* format, ...);
    virtual void Debug(std::string prefix, const char* format, ...);
    virtual void Warn(std::string prefix, const char* format, ...);
    virtual void Error(std::string prefix, const char* format, ...);

private:
    using Writers = std::vector<PRLogWriter*>;

    Writers::iterator Find(int id);
    void Dispatch(int level, const std::string& prefix, const char* format, va_list args);
    void ReleaseAll();

    Writers mWriters;  ///< owned, in the order in which they were added
    ProcessLock mLock;
};

/// [setup] The dispatcher in use. The library makes it when it is loaded and never deletes it; null
/// if that fails. A host that deletes or replaces it turns logging off before: while logging is on,
/// it is not asked whether it is null.
extern AUDIO_FILTER_API PRLog* pr_log;

/// [setup] Whether the library logs at all; false at first. Spelt as callers know it.
extern AUDIO_FILTER_API bool pr_log_enalbe;

/// [setup] Sets pr_log_enalbe.
AUDIO_FILTER_API void PR_LOG_ENABLE(bool enable);

/// [setup] The next number of the sequence 0, 1, 2, ... from which writers take their ids. Not
/// atomic.
AUDIO_FILTER_API int GeneratePRLogId();

/// [any] The local time as "2024-03-07 09:05:02.041". Throws std::bad_alloc when memory runs out,
/// as the next one.
AUDIO_FILTER_API std::string GetPRFormatDate();

/// [any] The local time as "2024_03_07_09_05_02_041", for file names.
AUDIO_FILTER_API std::string GetPRFormatDate2();

/// [any] A number in decimal.
AUDIO_FILTER_API std::string int2str_pr(int number);
