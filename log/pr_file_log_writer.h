#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "log/pr_log_writer.h"

/// Parameter block of PRFileLogWriter. At most one of the limits may be positive.
struct PRFileLogParam {
    std::string namePrefix;            ///< path and start of the file name, not empty
    std::int32_t nPartionSize = 0;     ///< from 1 on, the file is numbered, not dated
    std::int32_t partitionPeriod = 0;  ///< seconds; from 1 on, a new file when they have passed
};

/// Writes to a file that it owns: namePrefix + "_" + the local date and time, or + "_0" when a size
/// limit is set. An existing file of that name is truncated. Give each writer its own prefix: two
/// writers of one file, in one process or in several, overwrite each other's lines.
///
/// A full disk loses lines silently. Once there is room, writing resumes, and the first line may
/// follow a fragment of a lost one.
///
/// Two deliberate oddities, kept because readers of the logs rely on them: nothing advances the
/// written count, so a size limit never replaces the file; and the start time is not renewed, so
/// once the period has passed, every message opens a new file.
class AUDIO_FILTER_API PRFileLogWriter : public PRLogWriter {
public:
    /// [setup]
    /// @param level 1..4, the lowest level that is written
    explicit PRFileLogWriter(int level);

    /// [setup] Closes the file if it is open.
    ~PRFileLogWriter();

    /// [setup] Opens the file. Reports a bad block on standard error. A null block, an empty prefix
    /// and two positive limits leave an open file in use. With a period, a file that could not be
    /// opened is retried by the first message after the period of the last successful Init is over,
    /// and by every message if there was none.
    /// @param param PRFileLogParam
    /// @return RESULT_OK; RESULT_FAILURE for a bad block, a file that cannot be opened, or when
    ///         memory runs out
    int Init(void* param) override;

    /// [setup]
    int WriteLog(int level, const char* prefix, const char* format, char* args) override;

    /// [setup] Closes the file if it is open.
    void Destroy() override;

private:
    /// Runs before every accepted message; replaces the file when a limit requires it.
    /// @return RESULT_OK, or RESULT_FAILURE
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
