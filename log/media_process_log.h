#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "common/export.h"
#include "common/process_lock.h"

/// The levels of all logging; a higher one is more urgent.
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
/// What a full disk has no room for is lost, without a word. Two loggers of one file overwrite each
/// other's lines.
///
/// It holds a lock of its own. Some results leave that lock held by the calling thread, on purpose;
/// as the lock is re-entrant, this does not stop that thread, but other threads then wait at this
/// logger until the holder destroys it.
class AUDIO_FILTER_API MediaProcessLog {
public:
    /// [setup] Not initialised, at level 4.
    MediaProcessLog();
    MediaProcessLog(const MediaProcessLog&) = delete;
    MediaProcessLog& operator=(const MediaProcessLog&) = delete;

    /// [setup] Closes the file. In a thread that left the lock held, or while nobody does.
    ~MediaProcessLog();

    /// [setup] Opens a file and truncates it. That it cannot be opened shows in WriteLog only.
    /// @param level 1..4, the lowest that is written
    /// @param path not empty
    /// @return 0; 3 for a level or path out of range: nothing changes and the lock stays held
    int Init(ProcessLogLevel level, std::string path);

    /// [setup] Takes no lock.
    bool IsInited();

    /// [setup] Anything but 1..4 is ignored. Takes no lock.
    void SetLogLevel(ProcessLogLevel level);

    /// [any] Closes the file and sets the level to 4.
    /// @return true
    bool Uninit();

    /// [any] Writes a line: no date, no prefix. It goes to a file: an audio thread that must not
    /// wait keeps away. Checks in this order:
    /// @param format and what follows: as for printf
    /// @return 0 for a level below the logger's, with the lock held; 4 without an open file, with
    ///        the lock held; 2 for an empty format, with the lock held; 0 when written
    int WriteLog(ProcessLogLevel level, std::string format, ...);

private:
    void CloseFile();

    bool mInited = false;
    std::FILE* mFile = nullptr;
    std::int32_t mLevel = PROCESS_LOG_ERROR;
    ProcessLock mLock;
};
