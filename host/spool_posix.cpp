#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "host/failure.h"
#include "host/follow_links.h"
#include "host/spool.h"

namespace {

std::FILE* OpenBeside(const std::string& output) {
    const std::filesystem::path folder = FollowLinks(output).value_or(output).parent_path();
    const int file =
        open(folder.empty() ? "." : folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    return file < 0 ? nullptr : fdopen(file, "w+b");
}

}  // namespace

Spool::Spool(const std::string& output)
    : mOutput(output), mFile(output == "-" ? nullptr : OpenBeside(output)) {
    if (!mFile) {
        mFile.reset(std::tmpfile());
    }
    Check(mFile != nullptr);
}

void Spool::Write(const void* bytes, std::size_t count) {
    Check(std::fwrite(bytes, 1, count, mFile.get()) == count);
}

void Spool::Rewind() {
    Check(std::fseek(mFile.get(), 0, SEEK_SET) == 0);
}

std::size_t Spool::Read(void* bytes, std::size_t count) {
    const std::size_t read = std::fread(bytes, 1, count, mFile.get());
    Check(std::ferror(mFile.get()) == 0);
    return read;
}

void Spool::Check(bool done) const {
    if (!done) {
        throw Failure(mOutput, "cannot be stored in a temporary file", errno);
    }
}
