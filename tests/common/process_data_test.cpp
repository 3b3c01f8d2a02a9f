#include "common/process_data.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "common/result_code.h"
#include "common/steady_time.h"

using namespace audio_filter::internal;

namespace {

/// Counts the calls of the release callback.
struct Recycler {
    static void Take(void* context, ProcessData* entry) {
        auto* recycler = static_cast<Recycler*>(context);
        ++recycler->taken;
        recycler->last = entry;
        recycler->sizeAtRelease = entry->size;
    }

    int taken = 0;
    ProcessData* last = nullptr;
    int sizeAtRelease = -1;
};

int Write(ProcessData& data, std::string bytes, ProcessUsrData* usr = nullptr) {
    return data.WriteData(bytes.data(), static_cast<int>(bytes.size()), 7ULL, usr);
}

std::string Payload(const ProcessData& data) {
    return std::string(data.data, static_cast<std::size_t>(data.size));
}

void Attach(ProcessUsrData& usr, char byte) {
    usr.size = 1;
    usr.data = new char[1]{byte};
}

TEST(ProcessData, StartsEmptyAndFree) {
    const ProcessData data;
    EXPECT_EQ(data.data, nullptr);
    EXPECT_EQ(data.size, 0);
    EXPECT_TRUE(data.values.empty());
    EXPECT_EQ(data.timestamp, 0U);
    EXPECT_EQ(data.param.mediaType, 4);
    EXPECT_EQ(data.userData, nullptr);
    EXPECT_EQ(data.capacity, 0);
    EXPECT_EQ(data.GetRefCount(), 0);
    EXPECT_EQ(data.GetLastReleaseTime(), 0U);
}

TEST(ProcessData, MembersKeepTheirOrder) {
    const ProcessData data;
    const auto at = [](const auto& member) { return reinterpret_cast<std::uintptr_t>(&member); };
    const std::vector<std::uintptr_t> members = {
        at(data.data),        at(data.size),     at(data.values),   at(data.timestamp),
        at(data.param),       at(data.userData), at(data.capacity), at(data.mRefCount),
        at(data.mOlder),      at(data.mNext),    at(data.mContext), at(data.mCallback),
        at(data.mLastRelease)};
    EXPECT_EQ(members.front(), at(data));
    EXPECT_TRUE(std::is_sorted(members.begin(), members.end()));
}

TEST(ProcessData, ResetBelow1IsMinus1AndChangesNothing) {
    ProcessData data;
    ASSERT_EQ(data.Reset(8), 8);
    const char* block = data.data;
    for (const int bytes : {0, -1, INT32_MIN}) {
        EXPECT_EQ(data.Reset(bytes), -1) << bytes;
        EXPECT_EQ(data.data, block);
        EXPECT_EQ(data.capacity, 8);
    }
}

TEST(ProcessData, ResetOfAnEmptyBufferGivesZeros) {
    ProcessData data;
    EXPECT_EQ(data.Reset(1000), 1000);
    EXPECT_EQ(data.capacity, 1000);
    EXPECT_EQ(std::count(data.data, data.data + 1000, '\0'), 1000);
}

TEST(ProcessData, ResetToLessOrAsMuchReturnsTheCapacityUnchanged) {
    ProcessData data;
    data.Reset(8);
    const char* block = data.data;
    EXPECT_EQ(data.Reset(8), 8);
    EXPECT_EQ(data.Reset(1), 8);
    EXPECT_EQ(data.data, block);
}

TEST(ProcessData, ResetToMoreKeepsTheContents) {
    ProcessData data;
    ASSERT_EQ(Write(data, "contents"), RESULT_OK);
    EXPECT_EQ(data.Reset(12), 12);
    EXPECT_EQ(std::string(data.data, 12), std::string("contents\0\0\0\0", 12));
    EXPECT_EQ(data.size, 8);
    EXPECT_EQ(data.GetRefCount(), 1);
}

TEST(ProcessData, WriteDataCopiesAndGivesOneReference) {
    ProcessData data;
    AVParam param;
    param.audioSampleRate = 44100;
    std::string bytes = "payload";
    ASSERT_EQ(data.WriteData(bytes.data(), 7, param, 99ULL, nullptr), RESULT_OK);
    bytes = "changed";
    EXPECT_EQ(Payload(data), "payload");
    EXPECT_EQ(data.capacity, 7);
    EXPECT_EQ(data.timestamp, 99U);
    EXPECT_EQ(data.param.audioSampleRate, 44100);
    EXPECT_EQ(data.GetRefCount(), 1);
    EXPECT_EQ(data.userData, nullptr);
}

TEST(ProcessData, WriteDataWithoutParametersKeepsThoseOfTheEarlierUse) {
    ProcessData data;
    AVParam param;
    param.audioChannels = 2;
    char byte = 'x';
    data.WriteData(&byte, 1, param, 1ULL, nullptr);
    data.WriteData(&byte, 1, 2ULL, nullptr);
    EXPECT_EQ(data.param.audioChannels, 2);
    EXPECT_EQ(data.timestamp, 2U);
}

TEST(ProcessData, WriteDataOfLessKeepsTheBlockAndOfMoreGrowsIt) {
    ProcessData data;
    Write(data, "12345678");
    const char* block = data.data;
    EXPECT_EQ(Write(data, "123"), RESULT_OK);
    EXPECT_EQ(data.data, block);
    EXPECT_EQ(data.capacity, 8);
    EXPECT_EQ(Payload(data), "123");
    EXPECT_EQ(Write(data, "123456789"), RESULT_OK);
    EXPECT_EQ(data.capacity, 9);
    EXPECT_EQ(Payload(data), "123456789");
}

TEST(ProcessData, WriteDataSetsTheCountTo1WhateverItWas) {
    ProcessData data;
    Write(data, "a");
    data.SelfCopy()->SelfCopy();
    Write(data, "b");
    EXPECT_EQ(data.GetRefCount(), 1);
}

TEST(ProcessData, WriteDataOfSize0AllocatesNothingAndSucceeds) {
    ProcessData data;
    EXPECT_EQ(data.WriteData(nullptr, 0, 5ULL, nullptr), RESULT_OK);
    EXPECT_EQ(data.data, nullptr);
    EXPECT_EQ(data.capacity, 0);
    EXPECT_EQ(data.size, 0);
    EXPECT_EQ(data.timestamp, 5U);
    EXPECT_EQ(data.GetRefCount(), 1);
}

TEST(ProcessData, WriteDataOfSize0TouchesNoByteOfAnEarlierPayload) {
    ProcessData data;
    Write(data, "earlier");
    char byte = 'x';
    EXPECT_EQ(data.WriteData(&byte, 0, 5ULL, nullptr), RESULT_OK);
    EXPECT_EQ(std::string(data.data, 7), "earlier");
    EXPECT_EQ(data.size, 0);
}

TEST(ProcessData, WriteDataOfANegativeSizeOrOfMissingBytesIsMinus1AndChangesNothing) {
    ProcessData data;
    Write(data, "kept");
    data.mRefCount = 0;
    char byte = 'x';
    AVParam param;
    param.audioChannels = 9;
    EXPECT_EQ(data.WriteData(&byte, -1, 5ULL, nullptr), RESULT_FAILURE);
    EXPECT_EQ(data.WriteData(&byte, INT32_MIN, param, 5ULL, nullptr), RESULT_FAILURE);
    EXPECT_EQ(data.WriteData(nullptr, -1, 5ULL, nullptr), RESULT_FAILURE);
    EXPECT_EQ(data.WriteData(nullptr, 1, param, 5ULL, nullptr), RESULT_FAILURE);
    EXPECT_EQ(Payload(data), "kept");
    EXPECT_EQ(data.timestamp, 7U);
    EXPECT_EQ(data.param.audioChannels, -1);
    EXPECT_EQ(data.GetRefCount(), 0);
}

TEST(ProcessData, WriteDataAttachesACopyOfTheUserData) {
    ProcessData data;
    ProcessUsrData usr;
    Attach(usr, 'u');
    Write(data, "a", &usr);
    ASSERT_NE(data.userData, nullptr);
    EXPECT_NE(data.userData, &usr);
    EXPECT_NE(data.userData->data, usr.data);
    EXPECT_EQ(data.userData->size, 1);
    EXPECT_EQ(data.userData->data[0], 'u');
}

TEST(ProcessData, WriteDataAssignsToAttachedUserData) {
    ProcessData data;
    ProcessUsrData usr;
    Attach(usr, 'u');
    Write(data, "a", &usr);
    const ProcessUsrData* attached = data.userData;
    const char* block = attached->data;
    usr.data[0] = 'v';
    Write(data, "a", &usr);
    EXPECT_EQ(data.userData, attached);
    EXPECT_EQ(data.userData->data, block);
    EXPECT_EQ(data.userData->data[0], 'v');
}

TEST(ProcessData, WriteDataWithoutUserDataReleasesAttachedUserData) {
    ProcessData data;
    ProcessUsrData usr;
    Attach(usr, 'u');
    Write(data, "a", &usr);
    Write(data, "a");
    EXPECT_EQ(data.userData, nullptr);
}

TEST(ProcessData, WriteDataWithAUserRecordWithoutBytesAttachesADefaultRecord) {
    ProcessUsrData negative;
    ProcessUsrData noBytes;
    noBytes.size = 3;
    ProcessUsrData size0;
    Attach(size0, 'x');
    size0.size = 0;
    for (ProcessUsrData* usr : {&negative, &noBytes, &size0}) {
        ProcessData data;
        ASSERT_EQ(Write(data, "a", usr), RESULT_OK);
        ASSERT_NE(data.userData, nullptr);
        EXPECT_EQ(data.userData->size, -1);
        EXPECT_EQ(data.userData->data, nullptr);

        ProcessUsrData bytes;
        Attach(bytes, 'u');
        Write(data, "a", &bytes);
        Write(data, "a", usr);  // empties the attached record
        ASSERT_NE(data.userData, nullptr);
        EXPECT_EQ(data.userData->size, -1);
    }
}

TEST(ProcessData, FreeReleasesPayloadAndUserDataAndDropsAllReferences) {
    ProcessData data;
    ProcessUsrData usr;
    Attach(usr, 'u');
    Write(data, "payload", &usr);
    data.SelfCopy();
    data.Free();
    EXPECT_EQ(data.data, nullptr);
    EXPECT_EQ(data.capacity, 0);
    EXPECT_EQ(data.userData, nullptr);
    EXPECT_EQ(data.GetRefCount(), 0);
    data.Free();  // has nothing left to release
    EXPECT_EQ(Write(data, "again"), RESULT_OK);
    EXPECT_EQ(Payload(data), "again");
}

TEST(ProcessData, SelfCopyReturnsItselfWithOneReferenceMore) {
    ProcessData data;
    Write(data, "a");
    EXPECT_EQ(data.SelfCopy(), &data);
    EXPECT_EQ(data.GetRefCount(), 2);
}

TEST(ProcessData, OnlyTheLastReleaseCallsBackOnceWithSize0) {
    ProcessData data;
    Recycler recycler;
    data.SetFree(&Recycler::Take, &recycler);
    Write(data, "payload");
    data.SelfCopy();
    data.SelfRelease();
    EXPECT_EQ(recycler.taken, 0);
    EXPECT_EQ(data.size, 7);
    EXPECT_EQ(data.GetLastReleaseTime(), 0U);
    data.SelfRelease();
    EXPECT_EQ(recycler.taken, 1);
    EXPECT_EQ(recycler.last, &data);
    EXPECT_EQ(recycler.sizeAtRelease, 0);
    EXPECT_EQ(data.GetRefCount(), 0);
    EXPECT_EQ(data.capacity, 7);
}

TEST(ProcessData, SelfReleaseAt0DoesNothing) {
    ProcessData data;
    Recycler recycler;
    data.SetFree(&Recycler::Take, &recycler);
    data.size = 3;
    data.SelfRelease();
    EXPECT_EQ(recycler.taken, 0);
    EXPECT_EQ(data.GetRefCount(), 0);
    EXPECT_EQ(data.size, 3);
    EXPECT_EQ(data.GetLastReleaseTime(), 0U);
}

TEST(ProcessData, WithoutACallbackTheLastReleaseKeepsTheSizeAndSetsTheTime) {
    ProcessData data;
    Write(data, "payload");
    const unsigned long long before = SteadyMilliseconds();
    data.SelfRelease();
    EXPECT_EQ(data.GetRefCount(), 0);
    EXPECT_EQ(data.size, 7);
    EXPECT_GE(data.GetLastReleaseTime(), before);
    EXPECT_LE(data.GetLastReleaseTime(), SteadyMilliseconds());
}

TEST(ProcessData, FourThreadsThatTakeAndRelease1000ReferencesEachCallBackOnce) {
    ProcessData data;
    Recycler recycler;
    data.SetFree(&Recycler::Take, &recycler);
    Write(data, "payload");
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            data.SelfCopy();  // held by the thread
            threads.emplace_back([&data] {
                for (int round = 0; round < 1000; ++round) {
                    data.SelfCopy()->SelfRelease();
                }
                data.SelfRelease();
            });
        }
        data.SelfRelease();
    }
    EXPECT_EQ(recycler.taken, 1);
    EXPECT_EQ(data.GetRefCount(), 0);
}

}  // namespace
