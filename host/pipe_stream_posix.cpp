#include "host/pipe_stream.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include "host/failure.h"
#include "host/interrupt.h"

namespace {

/// Blocks until the descriptor is ready. Signals arrive only while it waits, so that none is missed
/// between the test and the wait.
/// @return false if `stopped` is true
bool WaitUntilReady(int file, short event, bool (*stopped)()) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    pollfd waiting = {file, event, 0};
    int ready = 0;
    while (!stopped() && (ready = ppoll(&waiting, 1, nullptr, &before)) < 0 && errno == EINTR) {
    }
    const bool isStopped = ready <= 0 && stopped();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return !isStopped;
}

}  // namespace

PipeInput::PipeInput() : ByteInput("standard input"), mFile(STDIN_FILENO) {
    NoteKind();
}

PipeInput::PipeInput(const std::string& path)
    : ByteInput(path), mFile(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
    if (mFile < 0) {
        throw Failure(path, "cannot be read", errno);
    }
    NoteKind();
}

PipeInput::~PipeInput() {
    if (mFile != STDIN_FILENO) {
        close(mFile);
    }
}

bool PipeInput::Interrupted() const {
    return mIsLive && SignalArrived();
}

void PipeInput::NoteKind() {
    struct stat status = {};
    mIsLive = fstat(mFile, &status) == 0 && !S_ISREG(status.st_mode);
    if (mIsLive) {
        CompleteStreamsOnInterrupt();
    }
}

std::size_t PipeInput::ReadSome(char* bytes, std::size_t count) {
    while (true) {
        if (mIsLive && !WaitUntilReady(mFile, POLLIN, SignalArrived)) {
            mLeft = mLeft.value_or(HeldBytes());
            count = std::min(count, *mLeft);
        }
        const ssize_t read = count == 0 ? 0 : ::read(mFile, bytes, count);
        if (read >= 0) {
            if (mLeft) {
                *mLeft -= static_cast<std::size_t>(read);
            }
            return static_cast<std::size_t>(read);
        }
        if (errno != EINTR && errno != EAGAIN) {
            throw Failure(Name(), "cannot be read", errno);
        }
    }
}

std::size_t PipeInput::HeldBytes() const {
    int held = 0;
    return ioctl(mFile, FIONREAD, &held) == 0 ? static_cast<std::size_t>(held) : 0;
}

void PipeOutput::Write(const char* bytes, std::size_t count) {
    constexpr std::size_t kNeverBlocks = 4096;  // a pipe that is ready takes as many
    while (count > 0) {
        if (!WaitUntilReady(STDOUT_FILENO, POLLOUT, ::Interrupted)) {
            throw Failure("interrupted");
        }
        const ssize_t written = write(STDOUT_FILENO, bytes, std::min(count, kNeverBlocks));
        if (written > 0) {
            bytes += written;
            count -= static_cast<std::size_t>(written);
        } else if (written == 0 || (errno != EINTR && errno != EAGAIN)) {
            throw Failure("standard output", "cannot be written", written == 0 ? 0 : errno);
        }
    }
}
