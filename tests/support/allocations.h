#pragma once

#include <cstddef>

/// Counts the allocations of the whole process from the construction of one on: operator new, and
/// malloc and its kin, where allocations.cpp says so. One at a time.
class Allocations {
public:
    Allocations();
    ~Allocations();
    Allocations(const Allocations&) = delete;
    Allocations& operator=(const Allocations&) = delete;

    /// So far; counts no further.
    std::size_t Stop();

    /// To be called for each allocation.
    static void Note();
};
