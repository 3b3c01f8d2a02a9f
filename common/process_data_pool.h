#pragma once

#include <cstdint>

#include "common/av_param.h"
#include "common/export.h"
#include "common/process_data.h"
#include "common/process_lock.h"

/// A fixed number of media buffers, for producers and consumers on different threads. The buffers
/// in use are kept in the order of their arrival, so that a consumer can take the oldest first;
/// each comes back by itself when its last reference is released.
///
///     ProcessDataPool pool(16, false, 100, 5000);
///     ProcessData* entry = pool.GetProcessData(bytes, size, param, timestamp, nullptr);
///     ...
///     entry->SelfRelease();
///
/// Buffers are meant to be released in the order of their arrival. Releasing one takes the older
/// ones out of use as well: they stay valid for who holds them, but never come back to the pool.
/// The pool's last entry has nobody to take it back: once handed out, it is gone for good, so that
/// the pool then has one entry fewer.
///
/// It holds a lock of its own over each operation. It must outlive its buffers.
class AUDIO_FILTER_API ProcessDataPool {
public:
    /// [setup] Throws std::bad_alloc when memory runs out.
    /// @param maxCount entries; a pool of none (or less) hands out nothing
    /// @param flag kept, and not used
    /// @param sweepInterval entries handed out between sweeps of the idle ones
    /// @param idleLimitMs milliseconds since its release after which a sweep empties a free entry
    ProcessDataPool(int maxCount, bool flag, int sweepInterval, unsigned long long idleLimitMs);

    /// [setup] Releases all entries, handed out or not.
    ~ProcessDataPool();
    ProcessDataPool(const ProcessDataPool&) = delete;
    ProcessDataPool& operator=(const ProcessDataPool&) = delete;

    /// [any] A filled entry with one reference. Allocates its payload. The form without parameters
    /// leaves the entry those of its earlier use, or of a call for which memory ran out.
    /// @param data size bytes, which are copied
    /// @param size bytes, at least 0
    /// @param param taken by value, which allocates at the caller's side
    /// @param timestamp of any unit
    /// @param usr bytes to attach a copy of; null for none
    /// @return null when all entries are in use, for a negative size or missing data, or when
    ///        memory runs out
    ProcessData* GetProcessData(char* data, int size, AVParam param, unsigned long long timestamp,
                                ProcessUsrData* usr);
    ProcessData* GetProcessData(char* data, int size, unsigned long long timestamp,
                                ProcessUsrData* usr);

    /// [any] The oldest entry in use, without a reference of its own; null when none is in use.
    ProcessData* GetFrontInputData();

    /// [any] Entries that are free, that there are, that are in use.
    int GetFreeDataSize();
    int GetMaxDataSize();
    int GetUsedDataSize();

    /// [setup] Releases the payload and the user data of every free entry. Takes no lock.
    void FreeUnused();

private:
    static void DataFree(void* pool, ProcessData* entry);

    ProcessData* HandOut(const char* data, int size, const AVParam* param,
                         unsigned long long timestamp, const ProcessUsrData* usr);
    void RecycleData(ProcessData* entry);
    bool TakeOutOfUse(ProcessData* entry);
    bool CheckData(ProcessData* entry);
    void CheckPool();
    void SweepIdle();

    ProcessData* mStorage;          ///< all entries
    ProcessData* mFree = nullptr;   ///< head of the free ones
    ProcessData* mInUse = nullptr;  ///< the newest of those in use
    bool mFlag;
    std::int32_t mFreeCount;
    std::int32_t mMaxCount;
    std::int32_t mSweepInterval;
    std::int32_t mAcquisitions = 0;  ///< since the last sweep
    unsigned long long mIdleLimitMs;
    ProcessLock mLock;
};
