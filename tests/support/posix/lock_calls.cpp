#include "support/posix/lock_calls.h"

#include <dlfcn.h>
#include <pthread.h>

#include <ctime>

namespace {

struct Counts {
    bool counting = false;
    const void* one = nullptr;
    int locks = 0;
    int ofTheOne = 0;
    int waits = 0;
    int destroyed = 0;
};

thread_local Counts counts;

template <typename Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int pthread_mutex_lock(pthread_mutex_t* mutex) {
    static const auto next = Next<int(pthread_mutex_t*)>("pthread_mutex_lock");
    counts.locks += counts.counting ? 1 : 0;
    counts.ofTheOne += counts.counting && mutex == counts.one ? 1 : 0;
    return next(mutex);
}
int pthread_mutex_destroy(pthread_mutex_t* mutex) {
    static const auto next = Next<int(pthread_mutex_t*)>("pthread_mutex_destroy");
    const int error = next(mutex);
    counts.destroyed += counts.counting && mutex == counts.one && error == 0 ? 1 : 0;
    return error;
}
int pthread_cond_wait(pthread_cond_t* cond, pthread_mutex_t* mutex) {
    static const auto next = Next<int(pthread_cond_t*, pthread_mutex_t*)>("pthread_cond_wait");
    counts.waits += counts.counting ? 1 : 0;
    return next(cond, mutex);
}
int nanosleep(const timespec* time, timespec* left) {
    static const auto next = Next<int(const timespec*, timespec*)>("nanosleep");
    counts.waits += counts.counting ? 1 : 0;
    return next(time, left);
}
}

LockCalls::LockCalls(const void* one) {
    counts = {true, one, 0, 0, 0, 0};
}

LockCalls::~LockCalls() {
    counts.counting = false;
}

int LockCalls::Locks() const {
    return counts.locks;
}

int LockCalls::OfTheOne() const {
    return counts.ofTheOne;
}

int LockCalls::Waits() const {
    return counts.waits;
}

bool LockCalls::IsTheOneDestroyed() const {
    return counts.destroyed == 1;
}
