#pragma once

#include <cstddef>

/// Counts the allocations of the whole process while it exists, and makes some of them fail:
/// operator new everywhere, the malloc family on Linux. One object at a time.
class Allocations {
public:
    Allocations();
    ~Allocations();
    Allocations(const Allocations&) = delete;
    Allocations& operator=(const Allocations&) = delete;

    /// Stops counting. @return allocations so far
    std::size_t Stop();

    /// Allocated blocks less released ones, since construction.
    std::ptrdiff_t Held() const;

    /// Makes an allocation fail: operator new throws, the malloc family returns null.
    /// @param n 1 for the next one
    /// @param onwards whether all later ones fail as well
    void Fail(std::size_t n, bool onwards);

    /// @return whether one failed
    bool FailNoMore();

    /// Called by the allocators for each allocation. @return whether it must fail
    static bool Note();

    /// Called for an allocation that cannot be made to fail.
    static void FailTheNextInstead();

    /// Called for each released block.
    static void NoteRelease();
};
