#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// The slot of a virtual operation in the table of its class. In the Itanium C++ ABI a pointer to it
/// holds 1 plus the offset in the table. A virtual destructor takes two slots.
template <typename Operation>
std::size_t VirtualSlot(Operation operation) {
    std::uintptr_t word = 0;
    std::memcpy(&word, &operation, sizeof(word));
    return (word - 1) / sizeof(void*);
}
