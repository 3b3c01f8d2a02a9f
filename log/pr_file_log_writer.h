#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "log/pr_log_writer.h"

/// Parameter block of PRFileLogWriter. At most one of the limits may be positive.
struct PRFileLogParam {
    std::string namePrefix;            ///< path and start of the file names, not empty
    std::int32_t nPartionSize = 0;     ///< limit of the written count; 1 or more: files by number
    std::int32_t partitionPeriod = 0;  ///< seconds; 1 or more: a new file once they have passed
};

/// Prints to a file that it owns: namePrefix + "_" + the local date and time, or + "_0" when a size
/// limit is set. A file of that name is truncated, and two writers of one name, in one process or
/// in several, overwrite each other's lines: each needs a prefix of its own.
///
/// What a full disk has no room for is lost, without a word; once there is room, lines are written
/// again, the first of which may be joined to a piece of a lost one.
///
/// Two things stand as they do on purpose, because readers of the logs rely on them: nothing
/// advances the written count, so a size limit never replaces the file; and the start time is not
/// renewed, so once the period has passed, every message opens a file of its own.
class AUDIO_FILTER_API PRFileLogWriter : public PRLogWriter {
public:
    /// [setup]
    /// @param level 1..4, the lowest that is printed
    explicit PRFileLogWriter(int level);

    /// [setup] Closes the file if it is open.
    ~PRFileLogWriter();

    /// [setup] Opens the file. Says on standard error what it does not take. A null block, an empty
    /// prefix and two positive limits leave a file that is open in use. With a period, a file that
    /// could not be opened is tried again at every message.
    /// @param param PRFileLogParam
    /// @return 0; -1 also when memory runs out
    int Init(void* param) override;

    /// [setup]
    int WriteLog(int level, const char* prefix, const char* format, char* args) override;

    /// [setup] Closes the file if it is open.
    void Destroy() override;

private:
    /// Replaces the file where a limit says so; before every accepted message.
    /// @return 0, or -1
    virtual int CheckPartion();

    int OpenFile(const std::string& suffix);

    std::string mNamePrefix;
    std::string mFileName;
    std::int32_t nPartionSize = 0;
    std::int32_t mPartitionPeriod = 0;  ///< seconds
    std::FILE* mFile = nullptr;
    std::uint32_t mWrittenCount = 0;
    std::uint32_t mPartNumber = 0;
    std::int64_t mStartTime = 0;  ///< seconds since the epoch
};
