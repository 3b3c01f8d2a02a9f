#include <windows.h>

#include <cstdint>
#include <new>

#include "common/process_lock.h"
#include "common/result_code.h"

namespace {

static_assert(sizeof(CRITICAL_SECTION) <= sizeof(ProcessLock) &&
              alignof(CRITICAL_SECTION) <= alignof(ProcessLock));
static_assert(sizeof(CONDITION_VARIABLE) <= sizeof(ProcessCond) &&
              alignof(CONDITION_VARIABLE) <= alignof(ProcessCond));

CRITICAL_SECTION* Of(ProcessLock* lock) {
    return std::launder(reinterpret_cast<CRITICAL_SECTION*>(lock->storage));
}

CONDITION_VARIABLE* Of(ProcessCond* cond) {
    return std::launder(reinterpret_cast<CONDITION_VARIABLE*>(cond->storage));
}

bool IsMine(const CRITICAL_SECTION* section) {
    return reinterpret_cast<std::uintptr_t>(section->OwningThread) == GetCurrentThreadId();
}

int Wait(ProcessCond* cond, ProcessLock* lock, DWORD ms) {
    CRITICAL_SECTION* section = Of(lock);
    if (!IsMine(section)) {
        return 0;
    }
    // The wait leaves the section only once.
    const LONG extra = section->RecursionCount - 1;
    for (LONG level = 0; level < extra; ++level) {
        LeaveCriticalSection(section);
    }
    const int woken = SleepConditionVariableCS(Of(cond), section, ms);
    for (LONG level = 0; level < extra; ++level) {
        EnterCriticalSection(section);
    }
    return woken;
}

}  // namespace

int process_lock_init(ProcessLock* lock) {
    InitializeCriticalSection(new (lock->storage) CRITICAL_SECTION);
    return RESULT_OK;
}

int process_lock_destroy(ProcessLock* lock) {
    CRITICAL_SECTION* section = Of(lock);
    while (IsMine(section)) {
        LeaveCriticalSection(section);
    }
    DeleteCriticalSection(section);
    return RESULT_OK;
}

int process_lock(ProcessLock* lock) {
    EnterCriticalSection(Of(lock));
    return RESULT_OK;
}

int process_unlock(ProcessLock* lock) {
    CRITICAL_SECTION* section = Of(lock);
    if (IsMine(section)) {
        LeaveCriticalSection(section);
    }
    return RESULT_OK;
}

int process_cond_init(ProcessCond* cond) {
    InitializeConditionVariable(new (cond->storage) CONDITION_VARIABLE);
    return RESULT_OK;
}

int process_cond_destroy(ProcessCond*) {
    return RESULT_OK;
}

int process_cond_signal(ProcessCond* cond) {
    WakeConditionVariable(Of(cond));
    return RESULT_OK;
}

int process_cond_wait(ProcessCond* cond, ProcessLock* lock) {
    return Wait(cond, lock, INFINITE);
}

int process_cond_wait_time(ProcessCond* cond, ProcessLock* lock, int ms) {
    return Wait(cond, lock, ms < 0 ? INFINITE : static_cast<DWORD>(ms));
}
