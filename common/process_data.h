#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "common/av_param.h"
#include "common/export.h"

/// A reference-counted media buffer. A ProcessDataPool makes it, hands it out and takes it back
/// when its last reference is released.
///
/// The count may be raised and lowered from any thread; everything else belongs to who holds the
/// buffer.
class AUDIO_FILTER_API ProcessData {
public:
    /// Takes a buffer back.
    using ReleaseCallback = void (*)(void* context, ProcessData* entry);

    ProcessData(const ProcessData&) = delete;
    ProcessData& operator=(const ProcessData&) = delete;

    /// [any] One reference more. @return this
    ProcessData* SelfCopy();

    /// [any] One reference less; with the last one, the buffer goes back to its pool (whose lock is
    /// waited for) and may not be touched any more. Does nothing without a reference.
    void SelfRelease();

    /// [any] 0: free.
    std::int32_t GetRefCount() const;

    /// [any] When the last reference was released: milliseconds of a clock that never jumps.
    unsigned long long GetLastReleaseTime() const;

    /// [setup] Room for a payload. What it holds is kept; new room starts as zeros.
    /// @param bytes at least 1
    /// @return the capacity, in bytes; -1 for less, or when memory runs out: the buffer is then
    ///        kept
    int Reset(int bytes);

    /// [setup] Releases the payload and the user data, and forgets all references.
    void Free();

    /// [setup] Who takes the buffer back.
    void SetFree(ReleaseCallback callback, void* context);

    char* data = nullptr;              ///< payload, capacity bytes
    std::int32_t size = 0;             ///< bytes of payload in use
    std::vector<std::int32_t> values;  ///< carried along
    unsigned long long timestamp = 0;
    AVParam param;
    ProcessUsrData* userData = nullptr;  ///< null for none
    std::int32_t capacity = 0;           ///< bytes that data holds

private:
    friend class ProcessDataPool;

    ProcessData() = default;
    ~ProcessData();

    /// Fills the buffer and gives it its one reference. The form without parameters keeps those of
    /// the entry's earlier use.
    /// @param source size bytes; may be null for none
    /// @param usr bytes to attach a copy of; null for none
    /// @return 0; -1 for a negative size, a missing source, or when memory runs out: the entry is
    ///         then without a reference
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
