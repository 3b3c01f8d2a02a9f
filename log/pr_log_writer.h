#pragma once

#include <cstdint>

#include "common/export.h"

/// Where log messages go: the base of the console and the file writer. A writer prints the messages
/// whose level is its own or higher: 1 debug, 2 info, 3 warn, 4 error.
///
/// Writers do not lock; PRLog calls them under its own lock. There is no virtual destructor: an
/// owner calls Destroy and then deletes the writer as the class it is. The virtual operations keep
/// their order, which callers across the library boundary rely on.
class AUDIO_FILTER_API PRLogWriter {
public:
    PRLogWriter(const PRLogWriter&) = delete;
    PRLogWriter& operator=(const PRLogWriter&) = delete;

    /// [setup] Prepares the writer.
    /// @param param the writer's own parameter block
    /// @return 0, or -1
    virtual int Init(void* param) = 0;

    /// [setup] Prints prefix, ":", the formatted message and a newline, and flushes.
    /// @param args the caller's variable-argument list: itself where va_list is a char*, else its
    ///        address. It is consumed. Null stands for no arguments: conversions then print as they
    ///        stand.
    /// @return 0, also for a message below the writer's level; -1 with nowhere to print
    virtual int WriteLog(int level, const char* prefix, const char* format, char* args) = 0;

    /// [setup] Releases what Init acquired.
    virtual void Destroy() = 0;

    /// [any] Unique in the process.
    virtual int GetId();

    /// [setup]
    /// @return 0
    virtual int SetLevel(int level);

protected:
    /// [setup] Takes the next id, from a counter that is not atomic.
    explicit PRLogWriter(int level);
    ~PRLogWriter() = default;

    std::int32_t mLevel;
    std::int32_t mId;
};
