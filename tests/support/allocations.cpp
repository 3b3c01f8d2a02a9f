#include "support/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

// Replaces operator new on every system. Direct calls of malloc are counted on Linux only, by
// support/posix/allocations_malloc.cpp.

namespace {

std::atomic<bool> counting{false};
std::atomic<std::size_t> made{0};
std::atomic<std::size_t> failed{0};
std::atomic<std::size_t> released{0};
std::atomic<std::size_t> failing{0};  ///< number of the allocation that fails; 0 for none
std::atomic<bool> failingOnwards{false};

/// The malloc call of an operator is already counted. Volatile, because compilers assume that malloc
/// reads no variable.
thread_local volatile bool insideOperator = false;

class Operator {
public:
    Operator() { insideOperator = true; }
    ~Operator() { insideOperator = false; }
    Operator(const Operator&) = delete;
    Operator& operator=(const Operator&) = delete;
};

void* AllocateOrNull(std::size_t size) {
    if (Allocations::Note()) {
        return nullptr;
    }
    const Operator quiet;
    return std::malloc(size == 0 ? 1 : size);
}

void* Allocate(std::size_t size) {
    void* memory = AllocateOrNull(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void Release(void* memory) {
    if (memory != nullptr) {
        Allocations::NoteRelease();
    }
    const Operator quiet;
    std::free(memory);
}

}  // namespace

Allocations::Allocations() {
    made = 0;
    failed = 0;
    released = 0;
    counting = true;
}

Allocations::~Allocations() {
    FailNoMore();
    Stop();
}

std::size_t Allocations::Stop() {
    counting = false;
    return made;
}

std::ptrdiff_t Allocations::Held() const {
    return static_cast<std::ptrdiff_t>(made - failed) - static_cast<std::ptrdiff_t>(released);
}

void Allocations::Fail(std::size_t n, bool onwards) {
    failingOnwards = onwards;
    failing = made + n;
}

bool Allocations::FailNoMore() {
    failing = 0;
    return failed != 0;
}

bool Allocations::Note() {
    if (!counting || insideOperator) {
        return false;
    }
    const std::size_t number = ++made;
    const bool fails = failing != 0 && (failingOnwards ? number >= failing : number == failing);
    failed += fails ? 1 : 0;
    return fails;
}

void Allocations::FailTheNextInstead() {
    --failed;
    ++failing;
}

void Allocations::NoteRelease() {
    if (counting && !insideOperator) {
        ++released;
    }
}

void* operator new(std::size_t size) {
    return Allocate(size);
}

void* operator new[](std::size_t size) {
    return Allocate(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return AllocateOrNull(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return AllocateOrNull(size);
}

void operator delete(void* memory) noexcept {
    Release(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    Release(memory);
}

void operator delete[](void* memory) noexcept {
    Release(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    Release(memory);
}
