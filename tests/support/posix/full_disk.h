#pragma once

#include <sys/resource.h>

#include <csignal>

/// Simulates a full disk: while it exists, no file grows beyond a size.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : mHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &mBefore);
        const rlimit limit = {bytes, mBefore.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &mBefore);
        std::signal(SIGXFSZ, mHandler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit mBefore = {};
    void (*mHandler)(int);
};
