#pragma once

#include <cstdint>

#include "common/export.h"

/// A destination of log messages, the base of the console and the file writer. A writer prints
/// messages at its own level and above: 1 debug, 2 info, 3 warn, 4 error.
///
/// Writers do not lock; PRLog calls them under its lock. There is no virtual destructor: the owner
/// calls Destroy, then deletes the writer as its own class. The order of the virtual operations is
/// fixed: callers across the library boundary rely on it.
class AUDIO_FILTER_API PRLogWriter {
public:
    PRLogWriter(const PRLogWriter&) = delete;
    PRLogWriter& operator=(const PRLogWriter&) = delete;

    /// [setup] Opens the destination.
    /// @param param the parameter block of the writer's class
    /// @return RESULT_OK or RESULT_FAILURE
    virtual int Init(void* param) = 0;

    /// [setup] Prints prefix, ":", the formatted message and a newline, and flushes.
    /// @param level 1..4
    /// @param prefix printed as it is
    /// @param format as for vprintf
    /// @param args the va_list itself where it is a char*, else its address. It is consumed. Null
    ///        means no arguments: conversions are printed literally.
    /// @return RESULT_OK, also for a message below the writer's level; RESULT_FAILURE without a
    ///         destination
    virtual int WriteLog(int level, const char* prefix, const char* format, char* args) = 0;

    /// [setup] Releases what Init acquired.
    virtual void Destroy() = 0;

    /// [any] The id, unique in the process.
    virtual int GetId();

    /// [setup]
    /// @return RESULT_OK
    virtual int SetLevel(int level);

protected:
    /// [setup] Takes the next id. The counter is not atomic.
    explicit PRLogWriter(int level);
    ~PRLogWriter() = default;

    std::int32_t mLevel;  ///< the lowest level that is written
    std::int32_t mId;     ///< what GetId returns
};
