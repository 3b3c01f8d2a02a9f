#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <deque>
#include <vector>

#include "common/process_data_pool.h"

/// Reference model of the pool's two lists. Entries are numbers.
struct PlainPool {
    explicit PlainPool(int count) : entries(count), maximum(count), references(Index(count)) {
        for (int i = 0; i < count; ++i) {
            free.push_back(i);
        }
    }

    static std::size_t Index(int number) { return static_cast<std::size_t>(number); }

    int Get() {
        if (free.empty()) {
            return -1;
        }
        const int entry = free.front();
        free.pop_front();
        inUse.push_back(entry);
        references[Index(entry)] = 1;
        return entry;
    }

    void Release(int entry) {
        int& count = references[Index(entry)];
        if (count == 0 || --count > 0 || entry == entries - 1) {
            return;
        }
        const auto place = std::find(inUse.begin(), inUse.end(), entry);
        if (place == inUse.end()) {
            return;
        }
        if (static_cast<int>(free.size()) == maximum - 1) {
            inUse.clear();
        } else {
            inUse.erase(inUse.begin(), place + 1);  // the newest takes all others with it
        }
        free.push_front(entry);
    }

    int entries;
    int maximum;
    std::vector<int> references;
    std::deque<int> free;   ///< head first
    std::deque<int> inUse;  ///< oldest first
};

inline void ExpectSameLists(ProcessDataPool& pool, const PlainPool& plain) {
    const auto number = [&](const ProcessData* entry) {
        return static_cast<int>(entry - pool.mStorage);
    };
    std::deque<int> free;
    for (const ProcessData* entry = pool.mFree; entry != nullptr; entry = entry->mNext) {
        free.push_back(number(entry));
        ASSERT_EQ(entry->data, nullptr);
        ASSERT_EQ(entry->mOlder, nullptr);
    }
    std::deque<int> inUse;
    for (const ProcessData* entry = pool.mInUse; entry != nullptr; entry = entry->mOlder) {
        inUse.push_front(number(entry));
    }
    ASSERT_TRUE(pool.mInUse == nullptr || pool.mInUse->mNext == nullptr);
    ASSERT_EQ(free, plain.free);
    ASSERT_EQ(inUse, plain.inUse);
    const ProcessData* front = pool.GetFrontInputData();
    ASSERT_EQ(front, plain.inUse.empty() ? nullptr : pool.mStorage + plain.inUse.front());
    ASSERT_EQ(pool.GetFreeDataSize(), static_cast<int>(plain.free.size()));
    ASSERT_EQ(pool.GetMaxDataSize(), plain.maximum);
    ASSERT_EQ(pool.GetUsedDataSize(), plain.maximum - static_cast<int>(plain.free.size()));
    for (int i = 0; i < plain.entries; ++i) {
        ASSERT_EQ(pool.mStorage[i].GetRefCount(), plain.references[PlainPool::Index(i)]);
    }
}
