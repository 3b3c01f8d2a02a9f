// The malloc family, counted and passed on to the C library or to a sanitizer.

#include <dlfcn.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include "support/allocations.h"

#define EXPORTED __attribute__((visibility("default")))

#if defined(ALLOCATOR_OF_A_SANITIZER)
#define NEXT(function) __interceptor_##function
#else
#define NEXT(function) __libc_##function
#endif

namespace {

/// Whether the caller is the packaged suppressor, which writes without checking the result of malloc.
bool IsUncheckedCaller(const void* caller) {
    Dl_info of = {};
    return dladdr(caller, &of) != 0 && std::strstr(of.dli_fname, "libwebrtc") != nullptr;
}

}  // namespace

extern "C" {

void* NEXT(malloc)(std::size_t size);
void* NEXT(calloc)(std::size_t count, std::size_t size);
void* NEXT(realloc)(void* memory, std::size_t size);
void* NEXT(memalign)(std::size_t alignment, std::size_t size);
void NEXT(free)(void* memory);

EXPORTED void* malloc(std::size_t size) {
    if (Allocations::Note()) {
        if (!IsUncheckedCaller(__builtin_return_address(0))) {
            return nullptr;
        }
        Allocations::FailTheNextInstead();
    }
    return NEXT(malloc)(size);
}

EXPORTED void* calloc(std::size_t count, std::size_t size) {
    return Allocations::Note() ? nullptr : NEXT(calloc)(count, size);
}

EXPORTED void* realloc(void* memory, std::size_t size) {
    if (Allocations::Note()) {
        return nullptr;
    }
    if (memory != nullptr) {
        Allocations::NoteRelease();
    }
    return NEXT(realloc)(memory, size);
}

EXPORTED void* memalign(std::size_t alignment, std::size_t size) {
    return Allocations::Note() ? nullptr : NEXT(memalign)(alignment, size);
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

EXPORTED void free(void* memory) {
    if (memory != nullptr) {
        Allocations::NoteRelease();
    }
    NEXT(free)(memory);
}
}
