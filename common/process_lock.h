#pragma once

#include <cstddef>

#include "common/export.h"

/// The lock and the condition variable behind every class of the library that guards state: a
/// critical section and its condition variable on Windows, the same operations on a re-entrant lock
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
/// Every pointer must point to an object that its init has prepared and its destroy has not yet
/// taken down. All operations but the two waits return 0.

/// A re-entrant lock: its owning thread may take it again and must give it back as often. Opaque.
struct ProcessLock {
    alignas(std::max_align_t) unsigned char storage[96] = {};
};

/// A condition variable for use with a ProcessLock. Opaque.
struct ProcessCond {
    alignas(std::max_align_t) unsigned char storage[96] = {};
};

/// [setup] Makes the lock ready, held by nobody.
AUDIO_FILTER_API int process_lock_init(ProcessLock* lock);

/// [setup] Takes the lock down. The calling thread may still hold it; no other thread may.
AUDIO_FILTER_API int process_lock_destroy(ProcessLock* lock);

/// [any] Waits until the lock is free or this thread's own, and takes it.
AUDIO_FILTER_API int process_lock(ProcessLock* lock);

/// [any] Gives the lock back once. Does nothing in a thread that does not hold it.
AUDIO_FILTER_API int process_unlock(ProcessLock* lock);

/// [setup] Makes the condition ready, with nobody waiting.
AUDIO_FILTER_API int process_cond_init(ProcessCond* cond);

/// [setup] Takes the condition down; nobody may be waiting.
AUDIO_FILTER_API int process_cond_destroy(ProcessCond* cond);

/// [any] Wakes one waiting thread, if there is one; it is not remembered otherwise.
AUDIO_FILTER_API int process_cond_signal(ProcessCond* cond);

/// [any] Gives the lock up whole, however often this thread holds it, waits to be woken, and takes
/// it back as often. A wait may also end without a signal: test the awaited state in a loop.
/// @return non-zero when woken, 0 on failure (such as in a thread that does not hold the lock)
AUDIO_FILTER_API int process_cond_wait(ProcessCond* cond, ProcessLock* lock);

/// [any] As process_cond_wait, for a limited time, by a clock that never jumps.
/// @param ms limit in milliseconds; 0 looks once, negative waits without limit
/// @return non-zero when woken, 0 on time-out or failure
AUDIO_FILTER_API int process_cond_wait_time(ProcessCond* cond, ProcessLock* lock, int ms);

/// [any] Holds a lock for as long as it lives.
class AUDIO_FILTER_API ProcessAutolock {
public:
    explicit ProcessAutolock(ProcessLock* lock);
    ~ProcessAutolock();
    ProcessAutolock(const ProcessAutolock&) = delete;
    ProcessAutolock& operator=(const ProcessAutolock&) = delete;

private:
    ProcessLock* mLock;
};
