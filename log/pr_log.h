#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>
#include <vector>

#include "common/export.h"
#include "common/process_lock.h"
#include "log/pr_log_writer.h"

/// The writer types of PRLog::AddLog.
enum ProcessLogType : std::int32_t {
    PROCESS_LOG_CONSOLE = 0,     ///< PRConsoleLogWriter
    PROCESS_LOG_FILE = 1,        ///< PRFileLogWriter
    PROCESS_LOG_UNSUPPORTED = 2  ///< reserved, not implemented
};

/// Dispatches every message to all its writers; each applies its own level. The library logs to the
/// instance in `pr_log`, and only while `pr_log_enalbe` is set:
///
///     PRConsoleLogParam console = {0};  // from log/pr_console_log_writer.h
///     pr_log->AddLog(PROCESS_LOG_CONSOLE, &console, 2);
///     PR_LOG_ENABLE(true);
///
/// Every operation holds the dispatcher's own lock, so a writer handles one message at a time. The
/// order of the virtual operations is fixed: callers across the library boundary rely on it.
class AUDIO_FILTER_API PRLog {
public:
    /// [setup] A dispatcher without writers.
    PRLog();
    PRLog(const PRLog&) = delete;
    PRLog& operator=(const PRLog&) = delete;

    /// [setup] Destroys and releases every writer.
    virtual ~PRLog();

    /// [any] Adds and initialises a writer. A writer whose Init fails is still added. The id
    /// counter is not atomic: no other thread may create a writer elsewhere at the same time.
    /// @param type PROCESS_LOG_CONSOLE or PROCESS_LOG_FILE
    /// @param param the writer's parameter block: PRConsoleLogParam or PRFileLogParam
    /// @param level 1..4, the lowest level that the writer prints
    /// @return the writer's id; RESULT_FAILURE for another type, or when memory runs out
    virtual int AddLog(ProcessLogType type, void* param, int level);

    /// [any] Destroys and releases a writer.
    /// @return RESULT_OK; RESULT_FAILURE for an unknown id
    virtual int RemoveLog(int id);

    /// [any]
    /// @return the result of the writer; RESULT_FAILURE for an unknown id
    virtual int SetLogLevel(int id, int level);

    /// [any] Destroys and releases every writer.
    /// @return RESULT_OK
    virtual int RemoveAllLog();

    /// @{
    /// [any] Dispatches a message at level 2, 1, 3 or 4. Writers access files and streams: do not
    /// call this from a thread that must not block.
    /// @param prefix stands before the message
    /// @param format and the arguments: as for printf
    virtual void Info(std::string prefix, const char* format, ...);
    virtual void Debug(std::string prefix, const char* format, ...);
    virtual void Warn(std::string prefix, const char* format, ...);
    virtual void Error(std::string prefix, const char* format, ...);
    /// @}

private:
    using Writers = std::vector<PRLogWriter*>;

    Writers::iterator Find(int id);
    void Dispatch(int level, const std::string& prefix, const char* format, va_list args);
    void ReleaseAll();

    Writers mWriters;  ///< owned, in the order of their addition
    ProcessLock mLock;
};

/// [setup] The dispatcher in use. It exists before the host's global objects are constructed: the
/// shared library creates it when it is loaded, and a static build at initialisation priority 101,
/// ahead of every object without a priority. The library never deletes it. It is null only if that
/// one allocation failed. Switch logging off before deleting or replacing it: while logging is on,
/// the library does not test it for null.
extern AUDIO_FILTER_API PRLog* pr_log;

/// [setup] Whether the library logs; initially false. The spelling is part of the interface.
extern AUDIO_FILTER_API bool pr_log_enalbe;

/// [setup] Sets pr_log_enalbe.
AUDIO_FILTER_API void PR_LOG_ENABLE(bool enable);

/// [setup] The next id of the sequence 0, 1, 2, ... that writers draw from. Not atomic.
AUDIO_FILTER_API int GeneratePRLogId();

/// [any] The local time as "2024-03-07 09:05:02.041". Throws std::bad_alloc when memory runs out,
/// as does the next function.
AUDIO_FILTER_API std::string GetPRFormatDate();

/// [any] The local time as "2024_03_07_09_05_02_041", for file names.
AUDIO_FILTER_API std::string GetPRFormatDate2();

/// [any] A number in decimal.
AUDIO_FILTER_API std::string int2str_pr(int number);
