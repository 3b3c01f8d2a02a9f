#include "host/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "host/failure.h"

namespace {

void CheckIsRegular(const std::string& path, int error, const struct stat& status) {
    if (error == 0 && !S_ISREG(status.st_mode)) {
        throw Failure(path, "not a regular file");
    }
}

}  // namespace

std::FILE* OpenRegularFile(const std::string& path) {
    struct stat status = {};
    CheckIsRegular(path, stat(path.c_str(), &status), status);
    // The path may have changed since: truncate only what is still a regular file.
    const int file =
        open(path.c_str(), O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666);
    if (file < 0) {
        throw Failure(path, "cannot be written", errno);
    }
    try {
        CheckIsRegular(path, fstat(file, &status), status);
        std::FILE* stream = ftruncate(file, 0) == 0 ? fdopen(file, "w") : nullptr;
        if (stream == nullptr) {
            throw Failure(path, "cannot be written", errno);
        }
        return stream;
    } catch (const Failure&) {
        close(file);
        throw;
    }
}
