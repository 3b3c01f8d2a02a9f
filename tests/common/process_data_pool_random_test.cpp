#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "common/plain_pool.h"
#include "common/process_data_pool.h"
#include "support/seed.h"

namespace {

void RunRandomOperations(std::mt19937& random, int entries) {
    ProcessDataPool pool(entries, false, RandomInt(random, 0, 5), 0);
    PlainPool plain(entries);
    char bytes[16] = "fifteen letters";
    for (int operation = 0; operation < 300; ++operation) {
        const int choice = RandomInt(random, 0, 99);
        if (choice < 45) {
            const int size = RandomInt(random, -1, 15);
            const int expected = size < 0 ? -1 : plain.Get();
            const ProcessData* entry =
                choice % 2 == 0 ? pool.GetProcessData(bytes, size, 1ULL, nullptr)
                                : pool.GetProcessData(bytes, size, AVParam(), 1ULL, nullptr);
            ASSERT_EQ(entry, expected < 0 ? nullptr : pool.mStorage + expected);
        } else if (choice < 80 && !plain.inUse.empty()) {
            // Mostly the oldest: releasing any other loses entries.
            const int last = static_cast<int>(plain.inUse.size()) - 1;
            const int place = RandomInt(random, 0, 19) == 0 ? RandomInt(random, 0, last) : 0;
            const int entry = plain.inUse[PlainPool::Index(place)];
            pool.mStorage[entry].SelfRelease();
            plain.Release(entry);
        } else if (choice < 90 && entries > 0) {
            const int entry = RandomInt(random, 0, entries - 1);  // including free and lost ones
            if (RandomInt(random, 0, 9) == 0 || plain.references[PlainPool::Index(entry)] == 0) {
                pool.mStorage[entry].SelfRelease();
                plain.Release(entry);
            }
        } else if (choice < 98 && !plain.inUse.empty()) {
            const int entry = plain.inUse.back();
            if (plain.references[PlainPool::Index(entry)] > 0) {
                ASSERT_EQ(pool.mStorage[entry].SelfCopy(), pool.mStorage + entry);
                ++plain.references[PlainPool::Index(entry)];
            }
        } else {
            pool.FreeUnused();
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSameLists(pool, plain)) << "operation " << operation;
    }
}

TEST(ProcessDataPoolRandom, OneHundredRunsOf300OperationsFollowThePlainModel) {
    std::mt19937 random = SeededRandom();
    for (int run = 0; run < 100; ++run) {
        const int entries = RandomInt(random, 0, 12);
        ASSERT_NO_FATAL_FAILURE(RunRandomOperations(random, entries))
            << "run " << run << ", " << entries << " entries";
    }
}

TEST(ProcessDataPoolThreads, AConsumerTakes5000BuffersInTheOrderOfTheProducer) {
    constexpr int kBuffers = 5000;
    ProcessDataPool pool(8, false, 3, 0);
    std::jthread producer([&pool] {
        for (int sent = 0; sent < kBuffers;) {
            if (pool.GetFreeDataSize() < 2) {  // the last entry never comes back
                std::this_thread::yield();
                continue;
            }
            AVParam param;
            param.streamIndex = sent;
            ProcessUsrData usr;
            usr.size = sizeof(sent);
            usr.data = new char[sizeof(sent)];
            std::memcpy(usr.data, &sent, sizeof(sent));
            ASSERT_NE(pool.GetProcessData(reinterpret_cast<char*>(&sent), sizeof(sent), param,
                                          static_cast<unsigned long long>(sent), &usr),
                      nullptr);
            ++sent;
        }
    });
    for (int expected = 0; expected < kBuffers;) {
        ProcessData* entry = pool.GetFrontInputData();
        if (entry == nullptr) {
            std::this_thread::yield();
            continue;
        }
        int payload = -1;
        int attached = -1;
        std::memcpy(&payload, entry->data, sizeof(payload));
        std::memcpy(&attached, entry->userData->data, sizeof(attached));
        EXPECT_EQ(payload, expected);
        EXPECT_EQ(attached, expected);
        EXPECT_EQ(entry->param.streamIndex, expected);
        EXPECT_EQ(entry->timestamp, static_cast<unsigned long long>(expected));
        entry->SelfRelease();
        ++expected;
    }
    producer.join();
    EXPECT_EQ(pool.GetFreeDataSize(), 8);
    EXPECT_EQ(pool.GetFrontInputData(), nullptr);
}

/// Two references to each entry, released on two threads, so that entries are lost on the way.
TEST(ProcessDataPoolThreads, BuffersOfFourThreadsKeepTheirBytesUntilTheLastOfTwoReleases) {
    constexpr int kPools = 100;
    constexpr int kEntries = 32;
    std::atomic<int> corrupted = 0;
    for (int run = 0; run < kPools; ++run) {
        ProcessDataPool pool(kEntries, false, 2, 0);
        std::atomic<ProcessData*> passedOn = nullptr;
        const auto work = [&](char mark) {
            for (int round = 0; round < 20; ++round) {
                char bytes[] = {mark, mark, mark};
                ProcessData* entry = pool.GetProcessData(bytes, 3, 1ULL, nullptr);
                if (entry != nullptr) {
                    ProcessData* other = passedOn.exchange(entry->SelfCopy());
                    if (std::memcmp(entry->data, bytes, 3) != 0) {
                        ++corrupted;
                    }
                    entry->SelfRelease();
                    if (other != nullptr) {
                        if (other->data[0] != other->data[2]) {
                            ++corrupted;
                        }
                        other->SelfRelease();
                    }
                }
            }
        };
        {
            const std::jthread threads[] = {std::jthread(work, 'a'), std::jthread(work, 'b'),
                                            std::jthread(work, 'c'), std::jthread(work, 'd')};
        }
        int free = 0;
        for (const ProcessData* entry = pool.mFree; entry != nullptr; entry = entry->mNext) {
            EXPECT_EQ(entry->GetRefCount(), 0);
            ++free;
        }
        EXPECT_EQ(pool.GetFreeDataSize(), free);
        EXPECT_LE(free, kEntries);
        if (passedOn != nullptr) {
            passedOn.load()->SelfRelease();
        }
    }
    EXPECT_EQ(corrupted, 0);
}

}  // namespace
