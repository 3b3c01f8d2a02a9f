#include "fake_posix_clock.h"

#include <pthread.h>

#include <cerrno>

FakePosixClock& ThePosixClock() {
    static FakePosixClock clock;
    return clock;
}

// The names that --wrap links to.
extern "C" {

int __real_clock_gettime(clockid_t clock, timespec* now);
std::time_t __real_time(std::time_t* now);
int __real_pthread_cond_timedwait(pthread_cond_t* cond, pthread_mutex_t* mutex,
                                  const timespec* until);

int __wrap_clock_gettime(clockid_t clock, timespec* now) {
    if (!ThePosixClock().now) {
        return __real_clock_gettime(clock, now);
    }
    *now = *ThePosixClock().now;
    ThePosixClock().read = clock;
    return 0;
}

std::time_t __wrap_time(std::time_t* now) {
    return ThePosixClock().time ? *ThePosixClock().time : __real_time(now);
}

int __wrap_pthread_cond_timedwait(pthread_cond_t* cond, pthread_mutex_t* mutex,
                                  const timespec* until) {
    if (!ThePosixClock().waitTimesOut) {
        return __real_pthread_cond_timedwait(cond, mutex, until);
    }
    ThePosixClock().deadline = *until;
    return ETIMEDOUT;
}
}
