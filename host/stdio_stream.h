#pragma once

#include <cerrno>
#include <cstdio>

#include "host/byte_stream.h"
#include "host/failure.h"

/// A C stream as input.
class StdioInput : public ByteInput {
public:
    explicit StdioInput(std::FILE* file) : ByteInput("standard input"), mFile(file) {}

private:
    std::size_t ReadSome(char* bytes, std::size_t count) override {
        const std::size_t read = std::fread(bytes, 1, count, mFile);
        if (std::ferror(mFile) != 0) {
            throw Failure(Name(), "cannot be read", errno);
        }
        return read;
    }

    std::FILE* mFile;
};

/// A C stream as output.
class StdioOutput : public ByteOutput {
public:
    explicit StdioOutput(std::FILE* file) : mFile(file) {}

    void Write(const char* bytes, std::size_t count) override {
        Check(std::fwrite(bytes, 1, count, mFile) == count);
    }
    void Flush() override { Check(std::fflush(mFile) == 0); }

private:
    static void Check(bool done) {
        if (!done) {
            throw Failure("standard output", "cannot be written", errno);
        }
    }

    std::FILE* mFile;
};
