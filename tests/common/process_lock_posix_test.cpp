#include <gtest/gtest.h>
#include <pthread.h>

#include <thread>

#include "common/process_lock.h"
#include "fake_posix_clock.h"

namespace {

/// The clock calls of a timed wait that times out immediately.
FakePosixClock WaitAt(timespec now, int ms) {
    ProcessLock lock;
    ProcessCond cond;
    process_lock_init(&lock);
    process_cond_init(&cond);
    process_lock(&lock);
    ThePosixClock() = {};
    ThePosixClock().now = now;
    ThePosixClock().waitTimesOut = true;
    EXPECT_EQ(process_cond_wait_time(&cond, &lock, ms), 0);
    const FakePosixClock seen = ThePosixClock();
    ThePosixClock() = {};
    process_unlock(&lock);
    process_cond_destroy(&cond);
    process_lock_destroy(&lock);
    return seen;
}

timespec DeadlineOf(timespec now, int ms) {
    return WaitAt(now, ms).deadline.value_or(timespec{});
}

TEST(ProcessLockPosix, TheDeadlineOfATimedWaitIsNowPlusItsMilliseconds) {
    EXPECT_EQ(DeadlineOf({10, 0}, 0).tv_sec, 10);
    EXPECT_EQ(DeadlineOf({10, 0}, 0).tv_nsec, 0);
    EXPECT_EQ(DeadlineOf({10, 600'000'000}, 399).tv_sec, 10);
    EXPECT_EQ(DeadlineOf({10, 600'000'000}, 399).tv_nsec, 999'000'000);
    EXPECT_EQ(DeadlineOf({10, 600'000'000}, 400).tv_sec, 11);
    EXPECT_EQ(DeadlineOf({10, 600'000'000}, 400).tv_nsec, 0);
    EXPECT_EQ(DeadlineOf({10, 600'000'000}, 2500).tv_sec, 13);
    EXPECT_EQ(DeadlineOf({10, 600'000'000}, 2500).tv_nsec, 100'000'000);
    EXPECT_EQ(DeadlineOf({10, 999'999'999}, 2'147'483'647).tv_sec, 2'147'494);
    EXPECT_EQ(DeadlineOf({10, 999'999'999}, 2'147'483'647).tv_nsec, 646'999'999);
}

/// The condition must use the same clock as the deadline: by the wall clock, a deadline one day
/// ahead would have passed long ago.
TEST(ProcessLockPosix, ATimedWaitUsesTheMonotonicClock) {
    EXPECT_EQ(WaitAt({10, 0}, 5).read, CLOCK_MONOTONIC);
    ProcessLock lock;
    ProcessCond cond;
    process_lock_init(&lock);
    process_cond_init(&cond);
    process_lock(&lock);
    bool woken = false;
    std::thread waker([&] {
        process_lock(&lock);
        woken = true;
        process_cond_signal(&cond);
        process_unlock(&lock);
    });
    while (!woken) {
        ASSERT_NE(process_cond_wait_time(&cond, &lock, 86'400'000), 0);
    }
    process_unlock(&lock);
    waker.join();
    process_cond_destroy(&cond);
    process_lock_destroy(&lock);
}

TEST(ProcessLockPosix, ALockLeftHeldByAnEndedThreadIsNotHeldByALaterThread) {
    ProcessLock lock;
    ProcessCond cond;
    process_lock_init(&lock);
    process_cond_init(&cond);
    std::thread([&lock] { process_lock(&lock); }).join();
    ThePosixClock() = {};
    ThePosixClock().waitTimesOut = true;
    // The platform reuses the ended thread's identity for a later thread, which must not count as
    // the holder: only a holder's wait reaches the condition.
    for (int i = 0; i < 20; ++i) {
        std::thread([&] { process_cond_wait_time(&cond, &lock, 0); }).join();
    }
    EXPECT_FALSE(ThePosixClock().deadline);
    ThePosixClock() = {};
    process_cond_destroy(&cond);  // the lock is still held, so it cannot be destroyed
}

struct CancelledWait {
    int ms = -1;  ///< negative for the wait without a limit
    bool isWaiting = false;
    ProcessLock lock;
    ProcessCond cond;
};

void* WaitUntilCancelled(void* argument) {
    auto& wait = *static_cast<CancelledWait*>(argument);
    process_lock(&wait.lock);
    process_lock(&wait.lock);  // both levels are released
    wait.isWaiting = true;
    while (true) {
        wait.ms < 0 ? process_cond_wait(&wait.cond, &wait.lock)
                    : process_cond_wait_time(&wait.cond, &wait.lock, wait.ms);
    }
}

/// True only while the thread is in its wait, as it sets the flag under the lock.
bool IsWaiting(CancelledWait& wait) {
    const ProcessAutolock hold(&wait.lock);
    return wait.isWaiting;
}

class ProcessLockPosixCancelled : public testing::TestWithParam<int> {};

TEST_P(ProcessLockPosixCancelled, AThreadCancelledInAWaitLeavesTheLockFree) {
    CancelledWait wait;
    wait.ms = GetParam();
    process_lock_init(&wait.lock);
    process_cond_init(&wait.cond);
    pthread_t thread = {};
    ASSERT_EQ(pthread_create(&thread, nullptr, &WaitUntilCancelled, &wait), 0);
    while (!IsWaiting(wait)) {
        std::this_thread::yield();
    }
    ASSERT_EQ(pthread_cancel(thread), 0);
    void* result = nullptr;
    ASSERT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, PTHREAD_CANCELED);
    // The mutex is the first member. Trying it makes a failure an assertion, not a deadlock.
    auto* mutex = reinterpret_cast<pthread_mutex_t*>(wait.lock.storage);
    ASSERT_EQ(pthread_mutex_trylock(mutex), 0);
    pthread_mutex_unlock(mutex);
    process_lock(&wait.lock);
    process_unlock(&wait.lock);
    process_cond_destroy(&wait.cond);
    process_lock_destroy(&wait.lock);
}

INSTANTIATE_TEST_SUITE_P(BothWaits, ProcessLockPosixCancelled, testing::Values(-1, 1'000'000));

}  // namespace
