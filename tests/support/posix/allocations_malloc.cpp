// malloc and its kin, counted and passed on to the C library's own.

#include <cerrno>
#include <cstddef>

#include "support/allocations.h"

#define EXPORTED __attribute__((visibility("default")))

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

EXPORTED void* malloc(std::size_t size) {
    Allocations::Note();
    return __libc_malloc(size);
}

EXPORTED void* calloc(std::size_t count, std::size_t size) {
    Allocations::Note();
    return __libc_calloc(count, size);
}

EXPORTED void* realloc(void* memory, std::size_t size) {
    Allocations::Note();
    return __libc_realloc(memory, size);
}

EXPORTED void* memalign(std::size_t alignment, std::size_t size) {
    Allocations::Note();
    return __libc_memalign(alignment, size);
}

EXPORTED void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return memalign(alignment, size);
}

EXPORTED int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    void* const made = memalign(alignment, size);
    if (made == nullptr) {
        return ENOMEM;
    }
    *memory = made;
    return 0;
}
}
