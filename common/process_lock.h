#pragma once

#include <cstddef>

#include "common/export.h"

/// @file
/// The lock and condition variable behind every class of the library that guards state: a critical
/// section and its condition variable on Windows, a re-entrant lock with the same operations
/// elsewhere.
///
///     ProcessLock lock;
///     process_lock_init(&lock);
///     {
///         ProcessAutolock hold(&lock);
///         ...
///     }
///     process_lock_destroy(&lock);
///
/// Every pointer must point to an object between its init and its destroy. All operations return
/// RESULT_OK, except the two waits, which return non-zero for success.

/// A re-entrant lock: its owner may lock it again and must unlock it as often. Opaque.
struct ProcessLock {
    /// Private to the operations.
    alignas(std::max_align_t) unsigned char storage[96] = {};
};

/// A condition variable for use with a ProcessLock. Opaque.
struct ProcessCond {
    /// Private to the operations.
    alignas(std::max_align_t) unsigned char storage[96] = {};
};

/// [setup] Initialises the lock, unlocked.
AUDIO_FILTER_API int process_lock_init(ProcessLock* lock);

/// [setup] Destroys the lock. The calling thread may hold it; no other thread may.
AUDIO_FILTER_API int process_lock_destroy(ProcessLock* lock);

/// [any] Locks; blocks while another thread holds the lock.
AUDIO_FILTER_API int process_lock(ProcessLock* lock);

/// [any] Unlocks one level. Does nothing in a thread that does not hold the lock.
AUDIO_FILTER_API int process_unlock(ProcessLock* lock);

/// [setup] Initialises the condition.
AUDIO_FILTER_API int process_cond_init(ProcessCond* cond);

/// [setup] Destroys the condition. No thread may be waiting on it.
AUDIO_FILTER_API int process_cond_destroy(ProcessCond* cond);

/// [any] Wakes one waiting thread. Without a waiting thread the signal is lost.
AUDIO_FILTER_API int process_cond_signal(ProcessCond* cond);

/// [any] Releases every level of the lock that this thread holds, waits, and locks as many levels
/// again. Wake-ups may be spurious: test the awaited state in a loop. A thread that is cancelled in
/// the wait (POSIX) leaves the lock unlocked; unlocking it while the stack unwinds does nothing.
/// @return non-zero when woken, 0 on failure (for example, the thread does not hold the lock)
AUDIO_FILTER_API int process_cond_wait(ProcessCond* cond, ProcessLock* lock);

/// [any] As process_cond_wait, with a time limit by a monotonic clock.
/// @param cond the condition
/// @param lock held by this thread
/// @param ms limit in milliseconds; 0 returns at once, a negative number sets no limit
/// @return non-zero when woken, 0 on time-out or failure
AUDIO_FILTER_API int process_cond_wait_time(ProcessCond* cond, ProcessLock* lock, int ms);

/// [any] Locks on construction and unlocks on destruction.
class AUDIO_FILTER_API ProcessAutolock {
public:
    /// [any] Locks.
    explicit ProcessAutolock(ProcessLock* lock);
    /// [any] Unlocks.
    ~ProcessAutolock();
    ProcessAutolock(const ProcessAutolock&) = delete;
    ProcessAutolock& operator=(const ProcessAutolock&) = delete;

private:
    ProcessLock* mLock;
};
