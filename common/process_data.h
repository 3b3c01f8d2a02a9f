#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "common/av_param.h"
#include "common/export.h"

/// A reference-counted media buffer, an entry of a ProcessDataPool. It returns to the pool when its
/// last reference is released.
///
/// Any thread may add and release references; everything else belongs to the holder of the buffer.
class AUDIO_FILTER_API ProcessData {
public:
    /// Called when the last reference is released.
    using ReleaseCallback = void (*)(void* context, ProcessData* entry);

    ProcessData(const ProcessData&) = delete;
    ProcessData& operator=(const ProcessData&) = delete;

    /// [any] Adds a reference. @return this
    ProcessData* SelfCopy();

    /// [any] Releases a reference. The last one returns the buffer to its pool, which blocks on the
    /// pool's lock; the buffer must not be used afterwards. Does nothing without a reference.
    void SelfRelease();

    /// [any] 0 for a free entry.
    std::int32_t GetRefCount() const;

    /// [any] Time of the last release of the last reference, milliseconds of a monotonic clock.
    unsigned long long GetLastReleaseTime() const;

    /// [setup] Grows the payload buffer to at least `bytes`. The contents are kept; the additional
    /// bytes are zero.
    /// @param bytes at least 1
    /// @return the capacity in bytes; RESULT_FAILURE for `bytes` below 1 or when memory runs out:
    ///         the buffer is then unchanged
    int Reset(int bytes);

    /// [setup] Frees the payload and the user data and sets the reference count to 0, without
    /// calling the release callback. An entry that is handed out then stays on the pool's list of
    /// entries in use and counts as used for good: its holder's SelfRelease does nothing. Use
    /// SelfRelease to return an entry.
    void Free();

    /// [setup] Sets the callback for the release of the last reference; null for none.
    void SetFree(ReleaseCallback callback, void* context);

    char* data = nullptr;                ///< payload, capacity bytes
    std::int32_t size = 0;               ///< bytes of payload in use
    std::vector<std::int32_t> values;    ///< unused by the library
    unsigned long long timestamp = 0;    ///< in any unit
    AVParam param;                       ///< the parameters of the payload
    ProcessUsrData* userData = nullptr;  ///< null for none
    std::int32_t capacity = 0;           ///< bytes that data holds

private:
    friend class ProcessDataPool;

    ProcessData() = default;
    ~ProcessData();

    /// Copies a payload into the buffer and sets the reference count to 1. The overload without
    /// parameters keeps those of the entry's previous use.
    /// @param source `bytes` bytes; null only for 0 bytes
    /// @param usr copied and attached; null for none
    /// @return RESULT_OK; RESULT_FAILURE for a negative size, a null source, or when memory runs
    ///         out: the entry then has no reference
    int WriteData(char* source, int bytes, AVParam avParam, unsigned long long time,
                  ProcessUsrData* usr);
    int WriteData(char* source, int bytes, unsigned long long time, ProcessUsrData* usr);

    int Fill(const char* source, int bytes, const AVParam* avParam, unsigned long long time,
             const ProcessUsrData* usr);
    void ReleaseUserData();

    std::atomic<std::int32_t> mRefCount = 0;
    ProcessData* mOlder = nullptr;  ///< next older entry in use
    ProcessData* mNext = nullptr;   ///< next free entry, or next newer one in use
    void* mContext = nullptr;
    ReleaseCallback mCallback = nullptr;
    std::atomic<unsigned long long> mLastRelease = 0;
};
