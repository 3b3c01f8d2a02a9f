#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

/// Bytes in a temporary file without a name, which the system removes however the process ends. Throws Failure when it
/// cannot be written or read.
class Spool {
public:
    /// @param output the file lies beside this one; in the folder for temporary files if it is "-" or its file
    ///        system has no files without a name
    explicit Spool(const std::string& output);

    void Write(const void* bytes, std::size_t count);

    /// Moves to the first byte.
    void Rewind();

    /// @return bytes read, up to `count`; fewer at the end
    std::size_t Read(void* bytes, std::size_t count);

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void Check(bool done) const;

    std::string mOutput;
    std::unique_ptr<std::FILE, Close> mFile;
};
