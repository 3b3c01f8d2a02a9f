#include "support/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

// operator new is replaced on every system. What calls malloc itself is seen on Linux: by the
// replacements in support/posix/allocations_malloc.cpp, or, where a sanitizer brings an allocator
// of its own, by the hook below.

namespace {

std::atomic<bool> counting{false};
std::atomic<std::size_t> noted{0};

void* Allocate(std::size_t size) {
    Allocations::Note();
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

Allocations::Allocations() {
    noted = 0;
    counting = true;
}

Allocations::~Allocations() {
    Stop();
}

std::size_t Allocations::Stop() {
    counting = false;
    return noted;
}

void Allocations::Note() {
    if (counting) {
        ++noted;
    }
}

extern "C" {
__attribute__((visibility("default"))) void __sanitizer_malloc_hook(const volatile void*,
                                                                    std::size_t);
__attribute__((visibility("default"))) void __sanitizer_free_hook(const volatile void*);

void __sanitizer_malloc_hook(const volatile void*, std::size_t) {
    Allocations::Note();
}

void __sanitizer_free_hook(const volatile void*) {}
}

void* operator new(std::size_t size) {
    return Allocate(size);
}

void* operator new[](std::size_t size) {
    return Allocate(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete[](void* memory) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
