#include "common/process_data_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/steady_time.h"

using namespace audio_filter::internal;

namespace {

using Entries = std::vector<const ProcessData*>;
constexpr unsigned long long kNeverIdle = ~0ULL;

class Pool : public ProcessDataPool {
public:
    explicit Pool(int entries, int sweepInterval = 1'000'000,
                  unsigned long long idleLimitMs = kNeverIdle)
        : ProcessDataPool(entries, false, sweepInterval, idleLimitMs) {}

    ProcessData* Get(std::string bytes = "x", ProcessUsrData* usr = nullptr) {
        return GetProcessData(bytes.data(), static_cast<int>(bytes.size()), 7ULL, usr);
    }

    Entries Free() const {
        Entries entries;
        for (const ProcessData* entry = mFree; entry != nullptr; entry = entry->mNext) {
            entries.push_back(entry);
        }
        return entries;
    }

    /// Newest first.
    Entries InUse() const {
        Entries entries;
        for (const ProcessData* entry = mInUse; entry != nullptr; entry = entry->mOlder) {
            entries.push_back(entry);
        }
        return entries;
    }
};

struct OneByte : ProcessUsrData {
    OneByte() {
        size = 1;
        data = new char[1]{'u'};
    }
};

TEST(ProcessDataPool, StartsWithAllEntriesFreeInTheOrderOfStorage) {
    Pool pool(3);
    EXPECT_EQ(pool.Free(), (Entries{pool.mStorage, pool.mStorage + 1, pool.mStorage + 2}));
    EXPECT_TRUE(pool.InUse().empty());
    EXPECT_EQ(pool.GetFreeDataSize(), 3);
    EXPECT_EQ(pool.GetMaxDataSize(), 3);
    EXPECT_EQ(pool.GetUsedDataSize(), 0);
    EXPECT_EQ(pool.GetFrontInputData(), nullptr);
}

TEST(ProcessDataPool, EveryEntryButTheLastIsTakenBackByThePool) {
    Pool pool(3);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(pool.mStorage[i].mCallback, &ProcessDataPool::DataFree);
        EXPECT_EQ(pool.mStorage[i].mContext, &pool);
    }
    EXPECT_EQ(pool.mStorage[2].mCallback, nullptr);
    EXPECT_EQ(pool.mStorage[2].mContext, nullptr);
}

TEST(ProcessDataPool, KeepsItsFlag) {
    EXPECT_TRUE(ProcessDataPool(1, true, 1, 1).mFlag);
    EXPECT_FALSE(ProcessDataPool(1, false, 1, 1).mFlag);
}

TEST(ProcessDataPool, APoolOf0OrMinus3EntriesHandsOutNothing) {
    for (const int entries : {0, -3, INT32_MIN}) {
        Pool pool(entries);
        EXPECT_EQ(pool.Get(), nullptr);
        EXPECT_EQ(pool.GetProcessData(nullptr, 0, AVParam(), 1ULL, nullptr), nullptr);
        EXPECT_EQ(pool.GetFrontInputData(), nullptr);
        EXPECT_EQ(pool.GetUsedDataSize(), 0);
        pool.FreeUnused();
    }
}

TEST(ProcessDataPool, APoolOf1EntryIsEmptyAfterItsFirstUse) {
    Pool pool(1);
    ProcessData* only = pool.Get();
    ASSERT_NE(only, nullptr);
    only->SelfRelease();
    EXPECT_EQ(only->GetRefCount(), 0);
    EXPECT_EQ(pool.Get(), nullptr);
    EXPECT_EQ(pool.GetUsedDataSize(), 1);
    EXPECT_EQ(pool.GetFrontInputData(), only);
}

TEST(ProcessDataPool, TheLastEntryNeverComesBack) {
    Pool pool(3);
    ProcessData* entries[] = {pool.Get(), pool.Get(), pool.Get()};
    EXPECT_EQ(entries[2], pool.mStorage + 2);
    EXPECT_EQ(pool.Get(), nullptr);
    for (ProcessData* entry : entries) {
        entry->SelfRelease();
    }
    EXPECT_EQ(pool.GetFreeDataSize(), 2);
    EXPECT_EQ(pool.GetMaxDataSize(), 3);
    EXPECT_NE(pool.Get(), nullptr);
    EXPECT_NE(pool.Get(), nullptr);
    EXPECT_EQ(pool.Get(), nullptr);
}

TEST(ProcessDataPool, AnEntryCarriesItsPayloadParametersAndUserDataAndOneReference) {
    Pool pool(2);
    AVParam param;
    param.audioSampleRate = 48000;
    OneByte usr;
    char bytes[] = "payload";
    ProcessData* entry = pool.GetProcessData(bytes, 7, param, 99ULL, &usr);
    ASSERT_NE(entry, nullptr);
    bytes[0] = 'P';
    EXPECT_EQ(std::string(entry->data, 7), "payload");
    EXPECT_EQ(entry->size, 7);
    EXPECT_EQ(entry->timestamp, 99U);
    EXPECT_EQ(entry->param.audioSampleRate, 48000);
    EXPECT_EQ(entry->userData->data[0], 'u');
    EXPECT_NE(entry->userData->data, usr.data);
    EXPECT_EQ(entry->GetRefCount(), 1);
    EXPECT_EQ(pool.GetUsedDataSize(), 1);
}

TEST(ProcessDataPool, WithoutParametersAnEntryKeepsThoseOfItsEarlierUse) {
    Pool pool(2);
    AVParam param;
    param.audioChannels = 2;
    char byte = 'x';
    ProcessData* entry = pool.GetProcessData(&byte, 1, param, 1ULL, nullptr);
    entry->SelfRelease();
    ASSERT_EQ(pool.Get(), entry);
    EXPECT_EQ(entry->param.audioChannels, 2);
}

TEST(ProcessDataPool, Size0SucceedsWithoutABuffer) {
    Pool pool(2);
    char byte = 'x';
    for (char* bytes : {&byte, static_cast<char*>(nullptr)}) {
        ProcessData* entry = pool.GetProcessData(bytes, 0, AVParam(), 3ULL, nullptr);
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->data, nullptr);
        EXPECT_EQ(entry->capacity, 0);
        EXPECT_EQ(entry->size, 0);
        EXPECT_EQ(entry->GetRefCount(), 1);
        entry->SelfRelease();
    }
}

TEST(ProcessDataPool, ANegativeSizeOrMissingBytesHandOutNothingAndTheEntryStaysFree) {
    Pool pool(2);
    char byte = 'x';
    EXPECT_EQ(pool.GetProcessData(&byte, -1, 1ULL, nullptr), nullptr);
    EXPECT_EQ(pool.GetProcessData(&byte, INT32_MIN, AVParam(), 1ULL, nullptr), nullptr);
    EXPECT_EQ(pool.GetProcessData(nullptr, 1, 1ULL, nullptr), nullptr);
    EXPECT_EQ(pool.Free().size(), 2U);
    EXPECT_EQ(pool.GetFreeDataSize(), 2);
    EXPECT_EQ(pool.mAcquisitions, 0);
    EXPECT_EQ(pool.Get(), pool.mStorage);
}

TEST(ProcessDataPool, TheFrontIsTheOldestAndAddsNoReference) {
    Pool pool(4);
    ProcessData* oldest = pool.Get();
    ProcessData* middle = pool.Get();
    ProcessData* newest = pool.Get();
    EXPECT_EQ(pool.GetFrontInputData(), oldest);
    EXPECT_EQ(oldest->GetRefCount(), 1);
    oldest->SelfRelease();
    EXPECT_EQ(pool.GetFrontInputData(), middle);
    middle->SelfRelease();
    EXPECT_EQ(pool.GetFrontInputData(), newest);
    newest->SelfRelease();
    EXPECT_EQ(pool.GetFrontInputData(), nullptr);
}

TEST(ProcessDataPool, ReleasedInArrivalOrderAllComeBackTheLatestReleasedFirst) {
    Pool pool(4);
    ProcessData* entries[] = {pool.Get(), pool.Get(), pool.Get()};
    for (ProcessData* entry : entries) {
        entry->SelfRelease();
    }
    EXPECT_EQ(pool.Free(), (Entries{entries[2], entries[1], entries[0], pool.mStorage + 3}));
    EXPECT_EQ(pool.GetFreeDataSize(), 4);
}

TEST(ProcessDataPool, ReleasingTheNewestFirstEmptiesTheListAndTheOlderEntriesNeverComeBack) {
    Pool pool(4);
    ProcessData* oldest = pool.Get("oldest");
    ProcessData* middle = pool.Get("middle");
    pool.Get("newest")->SelfRelease();
    EXPECT_EQ(pool.GetFrontInputData(), nullptr);
    EXPECT_EQ(pool.GetFreeDataSize(), 2);
    EXPECT_EQ(std::string(oldest->data, 6), "oldest");  // still valid for its holder
    oldest->SelfRelease();
    middle->SelfRelease();
    EXPECT_EQ(pool.GetFreeDataSize(), 2);
    EXPECT_EQ(pool.GetUsedDataSize(), 2);
    EXPECT_EQ(pool.Free().size(), 2U);
}

TEST(ProcessDataPool, ReleasingOneInTheMiddleTakesTheOlderOutOfUseWithIt) {
    Pool pool(5);
    ProcessData* oldest = pool.Get();
    ProcessData* middle = pool.Get();
    ProcessData* newest = pool.Get();
    middle->SelfRelease();
    EXPECT_EQ(pool.InUse(), Entries{newest});
    EXPECT_EQ(pool.Free().front(), middle);
    EXPECT_EQ(pool.GetFreeDataSize(), 3);
    oldest->SelfRelease();
    EXPECT_EQ(pool.GetFreeDataSize(), 3);
    newest->SelfRelease();
    EXPECT_EQ(pool.GetFreeDataSize(), 4);
}

TEST(ProcessDataPool, AnEntryWithTwoReferencesStaysInUseUntilTheSecondRelease) {
    Pool pool(3);
    ProcessData* entry = pool.Get();
    entry->SelfCopy();
    entry->SelfRelease();
    EXPECT_EQ(pool.GetFrontInputData(), entry);
    EXPECT_NE(entry->data, nullptr);
    entry->SelfRelease();
    EXPECT_EQ(pool.GetFrontInputData(), nullptr);
    entry->SelfRelease();  // one too many does nothing
    EXPECT_EQ(pool.GetFreeDataSize(), 3);
}

TEST(ProcessDataPool, AReturnedEntryKeepsNoMemoryAfterTheNextPoolOperation) {
    Pool pool(2);
    OneByte usr;
    ProcessData* entry = pool.Get("a long payload", &usr);
    entry->SelfRelease();
    pool.Get();  // checks the free list, then takes the same entry
    EXPECT_EQ(entry->capacity, 1);
    EXPECT_EQ(entry->userData, nullptr);
    entry->SelfRelease();
    pool.CheckPool();
    EXPECT_EQ(entry->data, nullptr);
    EXPECT_EQ(entry->capacity, 0);
}

TEST(ProcessDataPool, CheckPoolReleasesThePayloadAndUserDataOfFreeEntriesThatHoldAPayload) {
    Pool pool(3);
    OneByte usr;
    ProcessData& withPayload = pool.mStorage[0];
    ProcessData& without = pool.mStorage[1];
    withPayload.Reset(8);
    withPayload.userData = new ProcessUsrData(usr);
    withPayload.mRefCount = 4;
    without.userData = new ProcessUsrData(usr);
    pool.CheckPool();
    EXPECT_EQ(withPayload.data, nullptr);
    EXPECT_EQ(withPayload.capacity, 0);
    EXPECT_EQ(withPayload.userData, nullptr);
    EXPECT_EQ(withPayload.GetRefCount(), 0);
    EXPECT_NE(without.userData, nullptr);
    pool.FreeUnused();
    EXPECT_EQ(without.userData, nullptr);
}

TEST(ProcessDataPool, FreeUnusedLeavesTheEntriesInUse) {
    Pool pool(3);
    OneByte usr;
    const ProcessData* used = pool.Get("used", &usr);
    pool.mStorage[1].Reset(8);
    pool.FreeUnused();
    EXPECT_EQ(pool.mStorage[1].data, nullptr);
    EXPECT_EQ(std::string(used->data, 4), "used");
    EXPECT_NE(used->userData, nullptr);
}

TEST(ProcessDataPool, AnEntryOfAnotherPoolIsNotTakenBack) {
    Pool pool(3);
    Pool other(3);
    pool.Get();
    ProcessData* foreign = other.Get("foreign");
    pool.RecycleData(foreign);
    ProcessDataPool::DataFree(&pool, foreign);
    pool.RecycleData(nullptr);
    pool.RecycleData(pool.mStorage + 1);  // belongs to the pool, but is free
    EXPECT_EQ(pool.GetFreeDataSize(), 2);
    EXPECT_EQ(pool.Free().size(), 2U);
    EXPECT_EQ(pool.InUse().size(), 1U);
    EXPECT_EQ(std::string(foreign->data, 7), "foreign");
    EXPECT_TRUE(other.CheckData(foreign));
    EXPECT_FALSE(pool.CheckData(foreign));
}

TEST(ProcessDataPool, AFreeCountOfTheMaximumOrMoreIsSetToTheMaximumAndNothingIsAdded) {
    for (const int count : {3, 5}) {
        Pool pool(3);
        ProcessData* entry = pool.Get();
        pool.mFreeCount = count;
        pool.RecycleData(entry);
        EXPECT_EQ(pool.GetFreeDataSize(), 3);
        EXPECT_EQ(pool.Free().size(), 2U);
        EXPECT_TRUE(pool.CheckData(entry));
    }
}

TEST(ProcessDataPool, AnEntryCutOffFromItsNewerNeighbourIsDroppedAndTheMaximumFallsBy1) {
    Pool pool(6);
    ProcessData* cut = pool.Get();
    pool.Get();
    pool.Get();
    cut->mNext = nullptr;
    pool.RecycleData(cut);
    EXPECT_EQ(pool.GetMaxDataSize(), 5);
    EXPECT_EQ(pool.GetFreeDataSize(), 3);
    EXPECT_EQ(pool.Free().size(), 3U);
}

TEST(ProcessDataPool, AtACountOfOneInUseAnyListedEntryEmptiesTheList) {
    Pool pool(3);
    ProcessData* entry = pool.Get();
    pool.Get();
    pool.mFreeCount = 2;
    pool.RecycleData(entry);
    EXPECT_TRUE(pool.InUse().empty());
    EXPECT_EQ(pool.Free().front(), entry);
}

TEST(ProcessDataPool, ACutOffEntryStillComesBackIfOneEntryIsThenInUse) {
    Pool pool(6);
    ProcessData* cut = pool.Get();
    pool.Get();
    cut->mNext = nullptr;
    pool.RecycleData(cut);
    EXPECT_EQ(pool.GetMaxDataSize(), 5);
    EXPECT_EQ(pool.GetFreeDataSize(), 5);
    EXPECT_EQ(pool.Free().front(), cut);
}

TEST(ProcessDataPool, TheSweepRunsOnTheAcquisitionAfterTheInterval) {
    OneByte usr;
    Pool pool(10, 2, 0);
    ProcessData& idle = pool.mStorage[8];  // without a payload, so that only a sweep empties it
    for (int round = 0; round < 2; ++round) {
        idle.userData = new ProcessUsrData(usr);
        pool.Get();
        pool.Get();
        EXPECT_NE(idle.userData, nullptr) << round;
        EXPECT_EQ(pool.mAcquisitions, 2);
        pool.Get();
        EXPECT_EQ(idle.userData, nullptr) << round;
        EXPECT_EQ(pool.mAcquisitions, 0);
    }
}

TEST(ProcessDataPool, TheSweepSparesEntriesReleasedWithinTheIdleLimitAndThoseInUse) {
    OneByte usr;
    Pool pool(4, 0, 0);
    ProcessData& later = pool.mStorage[2];
    later.userData = new ProcessUsrData(usr);
    later.mLastRelease = ~0ULL;  // after now
    const ProcessData* used = pool.Get("used", &usr);
    EXPECT_NE(later.userData, nullptr);
    EXPECT_NE(used->userData, nullptr);
    EXPECT_EQ(std::string(used->data, 4), "used");

    Pool patient(4, 0, kNeverIdle);
    patient.mStorage[2].userData = new ProcessUsrData(usr);
    patient.Get();
    EXPECT_NE(patient.mStorage[2].userData, nullptr);
}

TEST(ProcessDataPool, TheSweepSparesAnEntryReleasedExactlyTheIdleLimitAgo) {
    OneByte usr;
    constexpr unsigned long long kLimitMs = 1;
    for (bool sameMillisecond = false; !sameMillisecond;) {
        Pool pool(4, -1, kLimitMs);
        ProcessData& idle = pool.mStorage[2];
        idle.userData = new ProcessUsrData(usr);
        const unsigned long long now = SteadyMilliseconds();
        idle.mLastRelease = now - kLimitMs;
        pool.Get();
        const bool kept = idle.userData != nullptr;
        sameMillisecond = SteadyMilliseconds() == now;
        EXPECT_TRUE(kept || !sameMillisecond);
    }
}

TEST(ProcessDataPool, AnIntervalOfMinus1SweepsEveryTime) {
    OneByte usr;
    Pool pool(4, -1, 0);
    pool.mStorage[2].userData = new ProcessUsrData(usr);
    pool.Get();
    EXPECT_EQ(pool.mStorage[2].userData, nullptr);
}

TEST(ProcessDataPool, TheReleasedLastEntryStaysInFrontAndCountsAsUsedUntilANewerOneIsReleased) {
    Pool pool(2);
    pool.Get()->SelfRelease();
    ProcessData* first = pool.Get();
    ProcessData* last = pool.Get();
    first->SelfRelease();
    last->SelfRelease();
    EXPECT_EQ(pool.GetFrontInputData(), last);
    EXPECT_EQ(pool.GetUsedDataSize(), 1);
    pool.Get()->SelfRelease();
    EXPECT_EQ(pool.GetFrontInputData(), nullptr);
    EXPECT_EQ(pool.GetUsedDataSize(), 1) << "it still counts as used";
}

TEST(ProcessDataPool, FreeOnAnEntryInUseLeavesItOnTheListForGood) {
    Pool pool(3);
    ProcessData* entry = pool.Get();
    entry->Free();
    EXPECT_EQ(entry->GetRefCount(), 0);
    entry->SelfRelease();
    EXPECT_EQ(pool.GetFrontInputData(), entry);
    EXPECT_EQ(pool.GetUsedDataSize(), 1);
    EXPECT_EQ(pool.GetFreeDataSize(), 2);
}

}  // namespace
