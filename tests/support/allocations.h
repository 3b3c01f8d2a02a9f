#pragma once

#include <cstddef>

/// Counts the allocations of the whole process from the construction of one on, and lets some of
/// them fail: operator new, and malloc and its kin, where allocations.cpp says so. One at a time.
class Allocations {
public:
    Allocations();
    ~Allocations();
    Allocations(const Allocations&) = delete;
    Allocations& operator=(const Allocations&) = delete;

    /// So far; counts no further.
    std::size_t Stop();

    /// Blocks made so far and not released, less older blocks that were.
    std::ptrdiff_t Held() const;

    /// Lets an allocation fail: operator new throws, malloc and its kin answer null.
    /// @param n 1 for the next one
    /// @param onwards whether all later ones fail, too
    void Fail(std::size_t n, bool onwards);

    /// @return whether one has failed
    bool FailNoMore();

    /// To be called for each allocation. @return whether it is to fail
    static bool Note();

    /// To be called for one that was to fail and cannot.
    static void FailTheNextInstead();

    /// To be called for each block that is released.
    static void NoteRelease();
};
