#include <gtest/gtest.h>

#include <thread>

#include "common/process_lock.h"
#include "fake_posix_clock.h"

namespace {

/// Of a timed wait that ends at once.
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

TEST(ProcessLockPosix, ATimedWaitEndsThatManyMillisecondsFromNow) {
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

/// The condition's own clock has to be the same one: by another, the deadline of a day would have
/// passed long ago, or never would.
TEST(ProcessLockPosix, ATimedWaitGoesByTheClockThatNeverJumps) {
    EXPECT_EQ(WaitAt({10, 0}, 5).asked, CLOCK_MONOTONIC);
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

TEST(ProcessLockPosix, WhatAnEndedThreadHasLeftHeldIsNotTheNextThreads) {
    ProcessLock lock;
    ProcessCond cond;
    process_lock_init(&lock);
    process_cond_init(&cond);
    std::thread([&lock] { process_lock(&lock); }).join();
    ThePosixClock() = {};
    ThePosixClock().waitTimesOut = true;
    // The platform gives the ended thread's identity to a later one, which must not pass for the
    // holder: only a holder's wait comes as far as the condition.
    for (int i = 0; i < 20; ++i) {
        std::thread([&] { process_cond_wait_time(&cond, &lock, 0); }).join();
    }
    EXPECT_FALSE(ThePosixClock().deadline);
    ThePosixClock() = {};
    process_cond_destroy(&cond);  // the lock is beyond help
}

}  // namespace
