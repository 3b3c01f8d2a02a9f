#include "common/process_data_pool.h"

#include <algorithm>

#include "common/result_code.h"
#include "common/steady_time.h"

using namespace audio_filter::internal;

ProcessDataPool::ProcessDataPool(int maxCount, bool flag, int sweepInterval,
                                 unsigned long long idleLimitMs)
    : mStorage(new ProcessData[static_cast<std::size_t>(std::max(maxCount, 0))]),
      mFlag(flag),
      mFreeCount(std::max(maxCount, 0)),
      mMaxCount(mFreeCount),
      mSweepInterval(sweepInterval),
      mIdleLimitMs(idleLimitMs) {
    process_lock_init(&mLock);
    if (mMaxCount > 0) {
        mFree = mStorage;
    }
    // The last entry is chained without a release callback: callers rely on it never returning.
    for (std::int32_t i = 0; i + 1 < mMaxCount; ++i) {
        mStorage[i].mNext = &mStorage[i + 1];
        mStorage[i].SetFree(&ProcessDataPool::DataFree, this);
    }
    CheckPool();
}

ProcessDataPool::~ProcessDataPool() {
    delete[] mStorage;
    process_lock_destroy(&mLock);
}

ProcessData* ProcessDataPool::GetProcessData(char* data, int size, AVParam param,
                                             unsigned long long timestamp, ProcessUsrData* usr) {
    return HandOut(data, size, &param, timestamp, usr);
}

ProcessData* ProcessDataPool::GetProcessData(char* data, int size, unsigned long long timestamp,
                                             ProcessUsrData* usr) {
    return HandOut(data, size, nullptr, timestamp, usr);
}

ProcessData* ProcessDataPool::HandOut(const char* data, int size, const AVParam* param,
                                      unsigned long long timestamp, const ProcessUsrData* usr) {
    const ProcessAutolock hold(&mLock);
    CheckPool();
    if (mFreeCount == 0 || mFree == nullptr) {
        return nullptr;
    }
    ProcessData* entry = mFree;
    if (entry->Fill(data, size, param, timestamp, usr) != RESULT_OK) {
        return nullptr;
    }
    mFree = entry->mNext;
    entry->mNext = nullptr;
    entry->mOlder = mInUse;
    if (mInUse != nullptr) {
        mInUse->mNext = entry;
    }
    mInUse = entry;
    --mFreeCount;
    ++mAcquisitions;
    if (mAcquisitions > mSweepInterval) {
        SweepIdle();
        mAcquisitions = 0;
    }
    CheckPool();
    return entry;
}

ProcessData* ProcessDataPool::GetFrontInputData() {
    const ProcessAutolock hold(&mLock);
    ProcessData* entry = mInUse;
    while (entry != nullptr && entry->mOlder != nullptr) {
        entry = entry->mOlder;
    }
    return entry;
}

int ProcessDataPool::GetFreeDataSize() {
    const ProcessAutolock hold(&mLock);
    return mFreeCount;
}

int ProcessDataPool::GetMaxDataSize() {
    const ProcessAutolock hold(&mLock);
    return mMaxCount;
}

int ProcessDataPool::GetUsedDataSize() {
    const ProcessAutolock hold(&mLock);
    return mMaxCount - mFreeCount;
}

void ProcessDataPool::FreeUnused() {
    for (ProcessData* entry = mFree; entry != nullptr; entry = entry->mNext) {
        entry->Free();
    }
}

void ProcessDataPool::DataFree(void* pool, ProcessData* entry) {
    static_cast<ProcessDataPool*>(pool)->RecycleData(entry);
}

void ProcessDataPool::RecycleData(ProcessData* entry) {
    const ProcessAutolock hold(&mLock);
    CheckPool();
    if (!CheckData(entry)) {
        return;
    }
    if (mFreeCount >= mMaxCount) {
        mFreeCount = mMaxCount;
        return;
    }
    if (!TakeOutOfUse(entry)) {
        return;
    }
    entry->mOlder = nullptr;
    entry->mNext = mFree;
    mFree = entry;
    ++mFreeCount;
    CheckPool();
}

/// Removes an entry and all older ones from the list. @return whether the entry becomes free
bool ProcessDataPool::TakeOutOfUse(ProcessData* entry) {
    if (mFreeCount == mMaxCount - 1 || entry == mInUse) {
        mInUse = nullptr;
        return true;
    }
    if (entry->mNext != nullptr) {
        entry->mNext->mOlder = nullptr;
        return true;
    }
    // Neither the newest entry nor one with a newer neighbour: the pool drops it.
    --mMaxCount;
    return mFreeCount == mMaxCount - 1;
}

bool ProcessDataPool::CheckData(ProcessData* entry) {
    for (const ProcessData* used = mInUse; used != nullptr; used = used->mOlder) {
        if (used == entry) {
            return true;
        }
    }
    return false;
}

/// Frees the payloads that free entries still hold.
void ProcessDataPool::CheckPool() {
    for (ProcessData* entry = mFree; entry != nullptr; entry = entry->mNext) {
        if (entry->data != nullptr) {
            entry->Free();
        }
    }
}

void ProcessDataPool::SweepIdle() {
    const unsigned long long now = SteadyMilliseconds();
    for (ProcessData* entry = mFree; entry != nullptr; entry = entry->mNext) {
        const unsigned long long released = entry->GetLastReleaseTime();
        if (now > released && now - released > mIdleLimitMs) {
            entry->Free();
        }
    }
}
