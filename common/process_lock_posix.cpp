#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <ctime>
#include <new>

#include "common/process_lock.h"
#include "common/result_code.h"

namespace {

/// A plain mutex with an owner and a depth. A recursive mutex does not serve: waiting on a condition
/// releases only one of its levels.
struct Lock {
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    std::atomic<std::uint64_t> owner = 0;  ///< 0 while the lock is free
    int depth = 0;
};

static_assert(sizeof(Lock) <= sizeof(ProcessLock) && alignof(Lock) <= alignof(ProcessLock));
static_assert(sizeof(pthread_cond_t) <= sizeof(ProcessCond) &&
              alignof(pthread_cond_t) <= alignof(ProcessCond));

Lock& Of(ProcessLock* lock) {
    return *std::launder(reinterpret_cast<Lock*>(lock->storage));
}

pthread_cond_t* Of(ProcessCond* cond) {
    return std::launder(reinterpret_cast<pthread_cond_t*>(cond->storage));
}

/// A number that is never reused. The platform reuses the id of a thread that has ended, and the
/// later thread would appear to hold the locks that the earlier one never released. Initial-exec
/// keeps the first use in a thread from allocating.
std::uint64_t ThisThread() {
    static std::atomic<std::uint64_t> count = 0;
    thread_local std::uint64_t identity __attribute__((tls_model("initial-exec"))) = 0;
    if (identity == 0) {
        identity = ++count;
    }
    return identity;
}

/// Only the thread itself writes its identity here, so the read needs no ordering.
bool IsMine(const Lock& lock) {
    return lock.owner.load(std::memory_order_relaxed) == ThisThread();
}

void SetOwner(Lock& lock, std::uint64_t thread, int depth) {
    lock.owner.store(thread, std::memory_order_relaxed);
    lock.depth = depth;
}

/// Unlocks the mutex when a cancelled wait unwinds: the wait has locked it again by then.
class UnlockIfCancelled {
public:
    explicit UnlockIfCancelled(pthread_mutex_t* mutex) : mMutex(mutex) {}
    UnlockIfCancelled(const UnlockIfCancelled&) = delete;
    UnlockIfCancelled& operator=(const UnlockIfCancelled&) = delete;
    ~UnlockIfCancelled() {
        if (mMutex != nullptr) {
            pthread_mutex_unlock(mMutex);
        }
    }

    void Dismiss() { mMutex = nullptr; }

private:
    pthread_mutex_t* mMutex;
};

/// Releases every level of the lock for the duration of a wait.
/// @return 1 when woken, 0 on time-out or failure
template <typename Wait>
int WaitReleased(Lock& lock, Wait wait) {
    if (!IsMine(lock)) {
        return 0;
    }
    const int depth = lock.depth;
    SetOwner(lock, 0, 0);
    UnlockIfCancelled guard(&lock.mutex);
    const int error = wait(&lock.mutex);
    guard.Dismiss();
    SetOwner(lock, ThisThread(), depth);
    return error == 0 ? 1 : 0;
}

timespec MonotonicTimeIn(int ms) {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    time.tv_sec += ms / 1000;
    time.tv_nsec += (ms % 1000) * 1'000'000L;
    if (time.tv_nsec >= 1'000'000'000L) {
        time.tv_nsec -= 1'000'000'000L;
        ++time.tv_sec;
    }
    return time;
}

}  // namespace

int process_lock_init(ProcessLock* lock) {
    new (lock->storage) Lock;
    return RESULT_OK;
}

int process_lock_destroy(ProcessLock* lock) {
    Lock& own = Of(lock);
    if (IsMine(own)) {
        SetOwner(own, 0, 0);
        pthread_mutex_unlock(&own.mutex);
    }
    pthread_mutex_destroy(&own.mutex);
    own.~Lock();
    return RESULT_OK;
}

int process_lock(ProcessLock* lock) {
    Lock& own = Of(lock);
    if (IsMine(own)) {
        ++own.depth;
    } else {
        pthread_mutex_lock(&own.mutex);
        SetOwner(own, ThisThread(), 1);
    }
    return RESULT_OK;
}

int process_unlock(ProcessLock* lock) {
    Lock& own = Of(lock);
    if (IsMine(own) && --own.depth == 0) {
        SetOwner(own, 0, 0);
        pthread_mutex_unlock(&own.mutex);
    }
    return RESULT_OK;
}

int process_cond_init(ProcessCond* cond) {
    pthread_condattr_t monotonic;
    pthread_condattr_init(&monotonic);
    pthread_condattr_setclock(&monotonic, CLOCK_MONOTONIC);
    pthread_cond_init(new (cond->storage) pthread_cond_t, &monotonic);
    pthread_condattr_destroy(&monotonic);
    return RESULT_OK;
}

int process_cond_destroy(ProcessCond* cond) {
    pthread_cond_destroy(Of(cond));
    return RESULT_OK;
}

int process_cond_signal(ProcessCond* cond) {
    pthread_cond_signal(Of(cond));
    return RESULT_OK;
}

int process_cond_wait(ProcessCond* cond, ProcessLock* lock) {
    return WaitReleased(
        Of(lock), [cond](pthread_mutex_t* mutex) { return pthread_cond_wait(Of(cond), mutex); });
}

int process_cond_wait_time(ProcessCond* cond, ProcessLock* lock, int ms) {
    if (ms < 0) {
        return process_cond_wait(cond, lock);
    }
    return WaitReleased(Of(lock), [cond, until = MonotonicTimeIn(ms)](pthread_mutex_t* mutex) {
        return pthread_cond_timedwait(Of(cond), mutex, &until);
    });
}
