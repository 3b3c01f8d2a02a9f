#pragma once

#include <cstdint>

#include "common/av_param.h"
#include "common/export.h"
#include "common/process_data.h"
#include "common/process_lock.h"

/// A fixed number of media buffers for producers and consumers on different threads. Entries in use
/// are listed in order of acquisition, so that a consumer can take the oldest first; each returns
/// to the pool when its last reference is released.
///
///     ProcessDataPool pool(16, false, 100, 5000);
///     ProcessData* entry = pool.GetProcessData(bytes, size, param, timestamp, nullptr);
///     ...
///     entry->SelfRelease();
///
/// Release buffers in order of acquisition. Releasing one also removes all older ones from the list
/// of entries in use: they stay valid for their holders, but never return to the pool.
///
/// The last entry of the pool has no release callback: once acquired it never returns, so the pool
/// has one entry fewer from then on, and it stays on the list of entries in use until a newer one
/// is released. A loop that drains the pool through GetFrontInputData must therefore stop on a
/// count of its own, not on a null result. Entries that never return still count as used.
///
/// Every operation but FreeUnused holds the pool's own lock. The pool must outlive its buffers.
class AUDIO_FILTER_API ProcessDataPool {
public:
    /// [setup] Throws std::bad_alloc when memory runs out.
    /// @param maxCount entries; below 1, the pool is empty
    /// @param flag stored, not used
    /// @param sweepInterval acquisitions between sweeps of idle entries
    /// @param idleLimitMs milliseconds after its release from which a sweep frees an idle entry
    ProcessDataPool(int maxCount, bool flag, int sweepInterval, unsigned long long idleLimitMs);

    /// [setup] Destroys all entries, in use or not.
    ~ProcessDataPool();
    ProcessDataPool(const ProcessDataPool&) = delete;
    ProcessDataPool& operator=(const ProcessDataPool&) = delete;

    /// [any] Acquires a filled entry with one reference. Allocates its payload.
    /// @param data `size` bytes, copied
    /// @param size bytes, at least 0
    /// @param param by value, so the caller allocates
    /// @param timestamp in any unit
    /// @param usr copied and attached; null for none
    /// @return null when no entry is free, for a negative size, for null data with a size above 0, or
    ///         when memory runs out
    ProcessData* GetProcessData(char* data, int size, AVParam param, unsigned long long timestamp,
                                ProcessUsrData* usr);

    /// [any] The same without parameters: keeps those of the entry's previous use, or of a call that
    /// ran out of memory.
    ProcessData* GetProcessData(char* data, int size, unsigned long long timestamp,
                                ProcessUsrData* usr);

    /// [any] The oldest entry in use, without adding a reference; null when the list is empty.
    ProcessData* GetFrontInputData();

    /// @{
    /// [any] The numbers of entries: free, in total, and used (the total less the free ones, so that
    /// entries which never return count).
    int GetFreeDataSize();
    int GetMaxDataSize();
    int GetUsedDataSize();
    /// @}

    /// [setup] Frees the payload and the user data of every free entry. Takes no lock.
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
    ProcessData* mFree = nullptr;   ///< head of the free list
    ProcessData* mInUse = nullptr;  ///< newest entry in use
    bool mFlag;
    std::int32_t mFreeCount;
    std::int32_t mMaxCount;
    std::int32_t mSweepInterval;
    std::int32_t mAcquisitions = 0;  ///< since the last sweep
    unsigned long long mIdleLimitMs;
    ProcessLock mLock;
};
