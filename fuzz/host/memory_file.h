#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

/// A file in memory.
class MemoryFile {
public:
    MemoryFile(const std::uint8_t* data, std::size_t size) : mHandle(memfd_create("fuzz", 0)) {
        EXPECT_EQ(write(mHandle, data, size), static_cast<ssize_t>(size));
    }
    ~MemoryFile() { close(mHandle); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string Path() const { return "/proc/self/fd/" + std::to_string(mHandle); }

private:
    int mHandle;
};
