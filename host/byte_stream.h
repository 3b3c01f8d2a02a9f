#pragma once

#include <cstddef>
#include <string>

/// Bytes to read in order, such as a pipe. Operations throw Failure if it cannot be read.
class ByteInput {
public:
    /// @param name in messages
    explicit ByteInput(std::string name) : mName(std::move(name)) {}
    virtual ~ByteInput() = default;
    ByteInput(const ByteInput&) = delete;
    ByteInput& operator=(const ByteInput&) = delete;

    const std::string& Name() const { return mName; }

    /// @return bytes read, fewer than `count` only at the end
    std::size_t Read(char* bytes, std::size_t count);

    /// The next bytes, which stay unread; fewer than `count` only at the end.
    std::string Peek(std::size_t count);

    /// Whether a signal has ended it, possibly inside a frame.
    virtual bool Interrupted() const { return false; }

private:
    /// @return bytes read, at least 1; 0 at the end
    virtual std::size_t ReadSome(char* bytes, std::size_t count) = 0;

    std::string mName;
    std::string mAhead;  ///< peeked
};

/// Bytes to write in order. Operations throw Failure if it cannot be written.
class ByteOutput {
public:
    virtual ~ByteOutput() = default;
    virtual void Write(const char* bytes, std::size_t count) = 0;
    virtual void Flush() = 0;
};
