#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "common/export.h"
#include "common/process_lock.h"

/// Log levels, in order of increasing severity.
enum ProcessLogLevel : std::int32_t {
    PROCESS_LOG_DEBUG = 1,
    PROCESS_LOG_INFO = 2,
    PROCESS_LOG_WARN = 3,
    PROCESS_LOG_ERROR = 4
};

/// A small logger that writes formatted lines to one file.
///
///     MediaProcessLog log;
///     log.Init(PROCESS_LOG_INFO, "stream.log");
///     log.WriteLog(PROCESS_LOG_WARN, "%d frames late", late);
///
/// A full disk loses lines silently. Two loggers of one file overwrite each other's lines.
///
/// The logger has its own lock. A deliberate oddity: some results leave that lock held by the
/// calling thread. The lock is re-entrant, so that thread is not affected, but every other thread
/// that uses the logger then blocks until the holder destroys it. No thread may be waiting when the
/// logger is destroyed.
class AUDIO_FILTER_API MediaProcessLog {
public:
    /// [setup] Not initialised, at level 4.
    MediaProcessLog();
    MediaProcessLog(const MediaProcessLog&) = delete;
    MediaProcessLog& operator=(const MediaProcessLog&) = delete;

    /// [setup] Closes the file. Call it from the thread that holds the lock, or while no thread does,
    /// and never while another thread waits for it.
    ~MediaProcessLog();

    /// [setup] Opens and truncates a file. A failure to open it shows only in WriteLog.
    /// @param level 1..4, the lowest level that is written
    /// @param path not empty
    /// @return RESULT_OK; RESULT_INVALID for a bad level or path: nothing changes, and the lock stays
    ///         held
    int Init(ProcessLogLevel level, std::string path);

    /// [setup] Takes no lock.
    bool IsInited();

    /// [setup] Values outside 1..4 are ignored. Takes no lock.
    void SetLogLevel(ProcessLogLevel level);

    /// [any] Closes the file and sets the level to 4.
    /// @return true
    bool Uninit();

    /// [any] Writes a line, without date or prefix. It accesses a file: do not call it from a thread
    /// that must not block.
    /// @param level 1..4
    /// @param format and the arguments: as for printf
    /// @return in this order: RESULT_OK for a level below the logger's, RESULT_NOT_INITIALISED without
    ///         an open file, RESULT_BAD_ARGUMENT for an empty format, each with the lock left held;
    ///         RESULT_OK for a line that was written
    int WriteLog(ProcessLogLevel level, std::string format, ...);

private:
    void CloseFile();

    bool mInited = false;
    std::FILE* mFile = nullptr;
    std::int32_t mLevel = PROCESS_LOG_ERROR;
    ProcessLock mLock;
};
