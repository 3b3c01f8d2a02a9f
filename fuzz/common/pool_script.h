#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "common/plain_pool.h"
#include "common/process_data_pool.h"
#include "common/process_lock.h"
#include "fuzz/support/script.h"
#include "support/block.h"

/// ProcessDataPool compared with its reference model, and a lock used by one thread.
class PoolScript {
public:
    explicit PoolScript(Script& script) : mScript(script) { Renew(); }

    void Step() {
        switch (mScript.Within(0, 15)) {
            case 0: Renew(); break;
            case 1: mPool->FreeUnused(); break;
            case 2: Lock(); break;
            case 3: Free(); break;
            case 4: Grow(); break;
            case 5:
            case 6: Copy(); break;
            case 7:
            case 8:
            case 9: Release(); break;
            default: Get(); break;
        }
        ExpectSameLists(*mPool, *mPlain);
    }

private:
    void Renew() {
        const int entries = mScript.OneIn(8) ? mScript.Within(-70'000, 200) : mScript.Within(0, 9);
        mPool = std::make_unique<ProcessDataPool>(entries, mScript.ConsumeBool(), mScript.AnyInt(),
                                                  mScript.ConsumeIntegral<std::uint64_t>());
        mPlain = std::make_unique<PlainPool>(std::max(entries, 0));
    }

    void Get() {
        const std::vector<char> payload = mScript.ConsumeBytes<char>(mScript.Count(40));
        Block source(payload);
        const int size =
            mScript.OneIn(10) ? mScript.Within(-9, 0) : static_cast<int>(payload.size());
        const bool missing = mScript.OneIn(10);
        AVParam param;
        param.streamIndex = mScript.AnyInt();
        const auto time = mScript.ConsumeIntegral<unsigned long long>();
        ProcessUsrData usr;
        usr.size = mScript.Within(-2, 20);
        usr.data = mScript.OneIn(8) ? nullptr : new char[20]();
        ProcessUsrData* attached = mScript.ConsumeBool() ? &usr : nullptr;
        const bool withParam = mScript.ConsumeBool();
        char* data = missing ? nullptr : source.Data();
        ProcessData* entry = withParam ? mPool->GetProcessData(data, size, param, time, attached)
                                       : mPool->GetProcessData(data, size, time, attached);
        const bool fails = size < 0 || (missing && size > 0);
        const int expected = fails ? -1 : mPlain->Get();
        ASSERT_EQ(entry, expected < 0 ? nullptr : &Entry(expected));
        if (entry == nullptr) {
            return;
        }
        ASSERT_EQ(entry->size, size);
        ASSERT_EQ(entry->timestamp, time);
        ASSERT_TRUE(std::equal(payload.begin(), payload.begin() + size, entry->data));
        ASSERT_TRUE(!withParam || entry->param.streamIndex == param.streamIndex);
        ASSERT_EQ(entry->userData != nullptr, attached != nullptr);
        if (attached != nullptr) {
            const bool hasBytes = usr.size > 0 && usr.data != nullptr;
            ASSERT_EQ(entry->userData->size, hasBytes ? usr.size : -1);
            ASSERT_EQ(entry->userData->data != nullptr, hasBytes);
        }
    }

    /// Mostly the oldest entry in use, else any, including free and lost ones.
    void Release() {
        if (mPlain->entries == 0) {
            return;
        }
        const bool oldest = !mPlain->inUse.empty() && !mScript.OneIn(4);
        const int number = oldest ? mPlain->inUse.front() : mScript.Within(0, mPlain->entries - 1);
        Entry(number).SelfRelease();
        mPlain->Release(number);
    }

    void Copy() {
        const int number = OneInUse();
        if (number >= 0) {
            ASSERT_EQ(Entry(number).SelfCopy(), &Entry(number));
            ++References(number);
        }
    }

    void Free() {
        const int number = OneInUse();
        if (number >= 0) {
            Entry(number).Free();
            References(number) = 0;
            ASSERT_EQ(Entry(number).data, nullptr);
        }
    }

    void Grow() {
        const int number = OneInUse();
        if (number < 0) {
            return;
        }
        ProcessData& entry = Entry(number);
        const std::vector<char> before(entry.data, entry.data + entry.capacity);
        const int bytes =
            mScript.ConsumeBool() ? mScript.Within(-5, 5000) : mScript.Within(1 << 30, INT32_MAX);
        const int held = std::max<int>(entry.capacity, bytes);
        ASSERT_EQ(entry.Reset(bytes), bytes < 1 || bytes > 5000 ? -1 : held);
        ASSERT_TRUE(std::equal(before.begin(), before.end(), entry.data));
        for (int i = static_cast<int>(before.size()); i < entry.capacity; ++i) {
            ASSERT_EQ(entry.data[i], 0);
        }
    }

    void Lock() {
        ProcessLock lock;
        ProcessCond cond;
        process_lock_init(&lock);
        process_cond_init(&cond);
        const int times = mScript.Within(0, 5);
        for (int i = 0; i < times; ++i) {
            ASSERT_EQ(process_lock(&lock), 0);
        }
        ASSERT_EQ(process_cond_signal(&cond), 0);
        ASSERT_EQ(process_cond_wait_time(&cond, &lock, 0), 0);
        for (int i = mScript.Within(0, 6); i > 0; --i) {
            ASSERT_EQ(process_unlock(&lock), 0);
        }
        process_cond_destroy(&cond);
        process_lock_destroy(&lock);
    }

    /// One of the entries with references; -1 for none.
    int OneInUse() {
        if (mPlain->inUse.empty()) {
            return -1;
        }
        const int number = mPlain->inUse[mScript.Count(mPlain->inUse.size() - 1)];
        return References(number) > 0 ? number : -1;
    }

    int& References(int number) { return mPlain->references[PlainPool::Index(number)]; }
    ProcessData& Entry(int number) { return mPool->mStorage[number]; }

    Script& mScript;
    std::unique_ptr<ProcessDataPool> mPool;
    std::unique_ptr<PlainPool> mPlain;
};
