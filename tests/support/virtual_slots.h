#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// The place of a virtual operation in its class's table, where pointers to members are made as the
/// Itanium C++ ABI says: one more than the offset in the table. A virtual destructor takes two
/// places.
template <typename Operation>
std::size_t VirtualSlot(Operation operation) {
    std::uintptr_t word = 0;
    std::memcpy(&word, &operation, sizeof(word));
    return (word - 1) / sizeof(void*);
}
