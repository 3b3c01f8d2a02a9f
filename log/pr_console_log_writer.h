#pragma once

#include <cstdint>
#include <cstdio>

#include "log/pr_log_writer.h"

/// Parameter block of PRConsoleLogWriter.
struct PRConsoleLogParam {
    std::int32_t nType = 0;  ///< 0 standard output, 1 standard error
};

/// Writes to standard output or standard error.
class AUDIO_FILTER_API PRConsoleLogWriter : public PRLogWriter {
public:
    /// [setup]
    /// @param level 1..4, the lowest level that is written
    explicit PRConsoleLogWriter(int level);

    /// [setup] Selects the stream. Reports a bad block on standard error. An unknown nType leaves no
    /// stream, so that later writes fail; a null block keeps the previous one.
    /// @param param PRConsoleLogParam
    /// @return RESULT_OK; RESULT_FAILURE for a null block or an unknown nType
    int Init(void* param) override;

    /// [setup]
    int WriteLog(int level, const char* prefix, const char* format, char* args) override;

    /// [setup] Does nothing.
    void Destroy() override;

private:
    std::int32_t mType = 0;
    std::FILE* mStream = nullptr;
};
