#include <gtest/gtest.h>

#include <cstdlib>

#include "support/allocations.h"

namespace {

TEST(AllocationsPosix, OfMallocReallocCallocAndAlignedAllocAreCounted) {
    Allocations allocations;
    void* volatile memory = std::malloc(10);
    memory = std::realloc(memory, 100'000);
    std::free(memory);
    memory = std::calloc(10, 10);
    std::free(memory);
    memory = std::aligned_alloc(64, 64);
    std::free(memory);
    EXPECT_GE(allocations.Stop(), 4U);
}

}  // namespace
