#include "common/process_lock.h"

ProcessAutolock::ProcessAutolock(ProcessLock* lock) : mLock(lock) {
    process_lock(mLock);
}

ProcessAutolock::~ProcessAutolock() {
    process_unlock(mLock);
}
