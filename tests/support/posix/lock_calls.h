#pragma once

/// Counts what this thread asks of the system that may make it wait, from the construction of one
/// on: pthread mutexes, waits for conditions and naps. Stands in for the C library's, and so
/// belongs into an executable without a sanitizer. One at a time.
class LockCalls {
public:
    /// @param one the mutex to be counted by itself, at this address; null for none
    explicit LockCalls(const void* one = nullptr);
    ~LockCalls();
    LockCalls(const LockCalls&) = delete;
    LockCalls& operator=(const LockCalls&) = delete;

    int Locks() const;     ///< mutexes taken
    int OfTheOne() const;  ///< of these, the one
    int Waits() const;
    bool IsTheOneDestroyed() const;  ///< with success, which takes a mutex that nobody holds
};
