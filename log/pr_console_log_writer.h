#pragma once

#include <cstdint>
#include <cstdio>

#include "log/pr_log_writer.h"

/// Parameter block of PRConsoleLogWriter.
struct PRConsoleLogParam {
    std::int32_t nType = 0;  ///< 0 standard output, 1 standard error
};

/// Prints to standard output or standard error, which it does not own.
class AUDIO_FILTER_API PRConsoleLogWriter : public PRLogWriter {
public:
    /// [setup]
    /// @param level 1..4, the lowest that is printed
    explicit PRConsoleLogWriter(int level);

    /// [setup] Says on standard error what it does not take, and then goes on printing where it did
    /// before, which is nowhere at first.
    /// @param param PRConsoleLogParam
    /// @return 0; -1 for a null block or another nType
    int Init(void* param) override;

    /// [setup]
    int WriteLog(int level, const char* prefix, const char* format, char* args) override;

    /// [setup] Does nothing.
    void Destroy() override;

private:
    std::int32_t mType = 0;
    std::FILE* mStream = nullptr;
};
