#pragma once

#include <optional>
#include <string>

#include "host/byte_stream.h"

/// Standard input or a named pipe. Unless it is a regular file, a signal ends it: what it holds at
/// that moment is still read, and the job is completed (see CompleteStreamsOnInterrupt).
class PipeInput : public ByteInput {
public:
    /// Standard input.
    PipeInput();

    /// Opens a named pipe. Reading blocks until another process opens it.
    explicit PipeInput(const std::string& path);

    ~PipeInput() override;

    bool Interrupted() const override;

private:
    void NoteKind();
    std::size_t ReadSome(char* bytes, std::size_t count) override;
    std::size_t HeldBytes() const;

    int mFile;
    bool mIsLive = false;              ///< not a regular file
    std::optional<std::size_t> mLeft;  ///< bytes still to read, once a signal has arrived
};

/// Standard output. A signal that gives up the job also ends a blocked write.
class PipeOutput : public ByteOutput {
public:
    void Write(const char* bytes, std::size_t count) override;
    void Flush() override {}  // nothing is buffered
};
