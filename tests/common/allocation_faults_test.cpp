#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "common/process_data_pool.h"
#include "support/fail_each.h"

namespace {

const std::string kLong(100, 'x');  // on the heap

AVParam Filled() {
    AVParam param;
    param.streamName = kLong;
    param.virtualBackground.modelPath = kLong;
    param.virtualBackground.licenceKey = kLong;
    param.textWatermark = kLong;
    param.recognition.sourceLanguages = {LANGUAGE_TYPE{}, LANGUAGE_TYPE{}};
    param.recognition.session = kLong;
    param.serial = 7;
    return param;
}

void ExpectFilled(const AVParam& param) {
    EXPECT_EQ(param.streamName, kLong);
    EXPECT_EQ(param.virtualBackground.modelPath, kLong);
    EXPECT_EQ(param.virtualBackground.licenceKey, kLong);
    EXPECT_EQ(param.textWatermark, kLong);
    EXPECT_EQ(param.recognition.sourceLanguages.size(), 2U);
    EXPECT_EQ(param.recognition.session, kLong);
    EXPECT_EQ(param.serial, 7);
}

struct UserBytes : ProcessUsrData {
    explicit UserBytes(int count) {
        size = count;
        data = new char[static_cast<std::size_t>(count)]();
    }
};

struct Pool : ProcessDataPool {
    Pool() : ProcessDataPool(4, false, 100, 1000) {}
};

TEST(AllocationFaults, ACopyOfARecordThrowsAndAFailedAssignmentCanBeRepeated) {
    const AVParam source = Filled();
    const int copies = FailEach([] { return std::make_unique<std::unique_ptr<AVParam>>(); },
                                [&](std::unique_ptr<AVParam>& copy) {
                                    copy = std::make_unique<AVParam>(source);
                                    return 0;
                                },
                                [](std::unique_ptr<AVParam>& copy, int code) {
                                    EXPECT_EQ(code == 0, copy != nullptr);
                                    if (copy) {
                                        ExpectFilled(*copy);
                                    }
                                });
    Report("copies of AVParam", copies);
    const int assignments = FailEach([] { return std::make_unique<AVParam>(); },
                                     [&](AVParam& target) {
                                         target = source;
                                         return 0;
                                     },
                                     [&](AVParam& target, int) {
                                         target = source;
                                         ExpectFilled(target);
                                     });
    Report("assignments of AVParam", assignments);
}

TEST(AllocationFaults, UserDataKeepsItsBytesWhenAnAssignmentFails) {
    const UserBytes source(100);
    const int failures = FailEach([] { return std::make_unique<UserBytes>(50); },
                                  [&](UserBytes& target) {
                                      target.ProcessUsrData::operator=(source);
                                      const ProcessUsrData copy(source);
                                      return copy.size;
                                  },
                                  [](UserBytes& target, int) {
                                      EXPECT_TRUE(target.size == 50 || target.size == 100);
                                      target.data[target.size - 1] = 1;
                                  });
    Report("assignments and copies of ProcessUsrData", failures);
}

TEST(AllocationFaults, APoolWithoutMemoryThrowsAndTheNextOneIsMade) {
    const int failures =
        FailEach([] { return std::make_unique<std::unique_ptr<ProcessDataPool>>(); },
                 [](std::unique_ptr<ProcessDataPool>& pool) {
                     pool = std::make_unique<ProcessDataPool>(1000, false, 10, 10);
                     return pool->GetFreeDataSize();
                 },
                 [](std::unique_ptr<ProcessDataPool>& pool, int code) {
                     EXPECT_EQ(code, pool ? 1000 : kThrew);
                 });
    Report("ProcessDataPool", failures);
}

/// The caller copies the parameters, before the pool runs.
TEST(AllocationFaults, APoolWithoutMemoryHandsOutNothingAndKeepsItsFreeEntries) {
    const AVParam param = Filled();
    UserBytes usr(200);
    char bytes[300] = {1, 2, 3};
    const int failures = FailEach([] { return std::make_unique<Pool>(); },
                                  [&](Pool& pool) {
                                      const auto free = pool.GetFreeDataSize();
                                      ProcessData* entry = nullptr;
                                      try {
                                          entry = pool.GetProcessData(bytes, 300, param, 5, &usr);
                                      } catch (const std::bad_alloc&) {
                                          EXPECT_EQ(pool.GetFreeDataSize(), free);
                                          return kThrew;
                                      }
                                      return entry == nullptr ? -1 : 0;
                                  },
                                  [&](Pool& pool, int code) {
                                      EXPECT_EQ(pool.GetUsedDataSize(), code == 0 ? 1 : 0);
                                      if (code == 0) {
                                          pool.GetFrontInputData()->SelfRelease();
                                      }
                                      ProcessData* entry =
                                          pool.GetProcessData(bytes, 300, param, 6, &usr);
                                      ASSERT_NE(entry, nullptr);
                                      EXPECT_EQ(entry->size, 300);
                                      EXPECT_EQ(entry->data[2], 3);
                                      EXPECT_EQ(entry->userData->size, 200);
                                      ExpectFilled(entry->param);
                                      entry->SelfRelease();
                                      EXPECT_EQ(pool.GetUsedDataSize(), 0);
                                  });
    Report("ProcessDataPool::GetProcessData", failures);
}

TEST(AllocationFaults, ABufferThatCannotGrowKeepsItsBytes) {
    const int failures = FailEach(
        [] {
            auto pool = std::make_unique<Pool>();
            char bytes[4] = {1, 2, 3, 4};
            pool->GetProcessData(bytes, 4, 0, nullptr);
            return pool;
        },
        [](Pool& pool) { return pool.GetFrontInputData()->Reset(1000); },
        [](Pool& pool, int code) {
            const ProcessData* entry = pool.GetFrontInputData();
            EXPECT_EQ(entry->capacity, code == -1 ? 4 : 1000);
            EXPECT_EQ(entry->data[3], 4);
        });
    Report("ProcessData::Reset", failures);
}

}  // namespace
