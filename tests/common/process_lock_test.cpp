#include "common/process_lock.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

constexpr int kSafetyMs = 60'000;  // elapses only when a test fails

class ProcessLockTest : public testing::Test {
protected:
    ProcessLockTest() {
        EXPECT_EQ(process_lock_init(&lock), 0);
        EXPECT_EQ(process_cond_init(&cond), 0);
    }
    ~ProcessLockTest() override {
        EXPECT_EQ(process_cond_destroy(&cond), 0);
        EXPECT_EQ(process_lock_destroy(&lock), 0);
    }

    /// A thread that takes the lock, sets `reached` and wakes a waiter.
    std::jthread TakeAndSignal() {
        return std::jthread([this] {
            process_lock(&lock);
            reached = true;
            process_cond_signal(&cond);
            process_unlock(&lock);
        });
    }

    ProcessLock lock;
    ProcessCond cond;
    bool reached = false;  // guarded by lock
};

TEST_F(ProcessLockTest, OneThreadTakesItTwiceAndMustReleaseItTwice) {
    EXPECT_EQ(process_lock(&lock), 0);
    EXPECT_EQ(process_lock(&lock), 0);
    std::jthread other = TakeAndSignal();
    EXPECT_EQ(process_unlock(&lock), 0);
    // Still held once: the other thread takes it only while this one waits.
    EXPECT_FALSE(reached);
    while (!reached) {
        ASSERT_NE(process_cond_wait_time(&cond, &lock, kSafetyMs), 0);
    }
    EXPECT_EQ(process_unlock(&lock), 0);
    other.join();
}

TEST_F(ProcessLockTest, AfterTwoReleasesAnotherThreadCanTakeIt) {
    process_lock(&lock);
    process_lock(&lock);
    process_unlock(&lock);
    process_unlock(&lock);
    TakeAndSignal().join();
    EXPECT_TRUE(reached);
}

TEST_F(ProcessLockTest, AWaitReleasesALockHeldFiveTimesAndTakesItBackFiveTimes) {
    for (int i = 0; i < 5; ++i) {
        process_lock(&lock);
    }
    std::jthread other = TakeAndSignal();
    while (!reached) {
        ASSERT_NE(process_cond_wait(&cond, &lock), 0);
    }
    other.join();

    reached = false;
    for (int i = 0; i < 4; ++i) {
        process_unlock(&lock);
    }
    // Still held once: a wait succeeds only for the holder.
    std::jthread second = TakeAndSignal();
    while (!reached) {
        ASSERT_NE(process_cond_wait_time(&cond, &lock, kSafetyMs), 0);
    }
    process_unlock(&lock);
    second.join();
    EXPECT_EQ(process_cond_wait_time(&cond, &lock, kSafetyMs), 0) << "no longer the holder";
}

TEST_F(ProcessLockTest, AWaitOfZeroMillisecondsReturnsAtOnceWith0) {
    process_lock(&lock);
    EXPECT_EQ(process_cond_wait_time(&cond, &lock, 0), 0);
    process_unlock(&lock);
}

TEST_F(ProcessLockTest, ATimeOutReturns0AndLeavesTheLockHeld) {
    process_lock(&lock);
    EXPECT_EQ(process_cond_wait_time(&cond, &lock, 1), 0);
    std::jthread other = TakeAndSignal();
    EXPECT_FALSE(reached);
    while (!reached) {
        ASSERT_NE(process_cond_wait_time(&cond, &lock, kSafetyMs), 0);
    }
    process_unlock(&lock);
    other.join();
}

TEST_F(ProcessLockTest, ANegativeTimeWaitsWithoutLimit) {
    process_lock(&lock);
    std::jthread other = TakeAndSignal();
    while (!reached) {
        ASSERT_NE(process_cond_wait_time(&cond, &lock, -1), 0);
    }
    process_unlock(&lock);
    other.join();
}

TEST_F(ProcessLockTest, ASignalWithoutAWaiterIsLost) {
    process_cond_signal(&cond);
    process_lock(&lock);
    EXPECT_EQ(process_cond_wait_time(&cond, &lock, 0), 0);
    process_unlock(&lock);
}

TEST_F(ProcessLockTest, AWaitWithoutHoldingTheLockFails) {
    EXPECT_EQ(process_cond_wait(&cond, &lock), 0);
    EXPECT_EQ(process_cond_wait_time(&cond, &lock, kSafetyMs), 0);
}

TEST_F(ProcessLockTest, AnUnlockByAThreadThatDoesNotHoldItChangesNothing) {
    process_lock(&lock);
    std::thread([this] { EXPECT_EQ(process_unlock(&lock), 0); }).join();
    std::jthread other = TakeAndSignal();
    EXPECT_FALSE(reached);
    while (!reached) {
        ASSERT_NE(process_cond_wait_time(&cond, &lock, kSafetyMs), 0);
    }
    process_unlock(&lock);
    other.join();
}

TEST_F(ProcessLockTest, AnAutolockHoldsItForItsLifetime) {
    {
        const ProcessAutolock hold(&lock);
        const std::jthread other = TakeAndSignal();
        while (!reached) {  // only the holder can wait
            ASSERT_NE(process_cond_wait_time(&cond, &lock, kSafetyMs), 0);
        }
    }
    EXPECT_EQ(process_cond_wait_time(&cond, &lock, kSafetyMs), 0) << "no longer the holder";
}

TEST_F(ProcessLockTest, TwoThreadsAddingUnderItLoseNothing) {
    int sum = 0;
    const auto add = [this, &sum] {
        for (int i = 0; i < 20'000; ++i) {
            const ProcessAutolock outer(&lock);
            const ProcessAutolock inner(&lock);
            ++sum;
        }
    };
    std::thread first(add);
    std::thread second(add);
    first.join();
    second.join();
    EXPECT_EQ(sum, 40'000);
}

TEST(ProcessLockLifetime, ALockThatItsOwnThreadStillHoldsCanBeDestroyed) {
    ProcessLock lock;
    process_lock_init(&lock);
    process_lock(&lock);
    process_lock(&lock);
    EXPECT_EQ(process_lock_destroy(&lock), 0);
    EXPECT_EQ(process_lock_init(&lock), 0);
    std::thread([&lock] {
        process_lock(&lock);
        process_unlock(&lock);
    }).join();
    EXPECT_EQ(process_lock_destroy(&lock), 0);
}

}  // namespace
