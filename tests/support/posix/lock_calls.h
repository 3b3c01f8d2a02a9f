#pragma once

/// Counts this thread's blocking calls while it exists: pthread mutexes, waits on conditions and
/// sleeps. Replaces the C library's functions, so the executable cannot have a sanitizer. One object
/// at a time.
class LockCalls {
public:
    /// @param one address of a mutex to count separately; null for none
    explicit LockCalls(const void* one = nullptr);
    ~LockCalls();
    LockCalls(const LockCalls&) = delete;
    LockCalls& operator=(const LockCalls&) = delete;

    int Locks() const;     ///< mutexes taken
    int OfTheOne() const;  ///< locks of that mutex
    int Waits() const;
    bool IsTheOneDestroyed() const;  ///< successfully, so no thread held it
};
