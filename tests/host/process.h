#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <vector>

#include "support/temp_dir.h"

/// A run of the executable, with its standard error in a file.
class Process {
public:
    /// @param out file for standard output; empty to close it
    /// @param largestFile file size limit in bytes
    /// @param in file for standard input
    Process(const std::vector<std::string>& words, const std::string& out, const std::string& err,
            rlim_t largestFile = RLIM_INFINITY, const std::string& in = "/dev/null")
        : mErr(err) {
        std::vector<char*> argv = {const_cast<char*>(AUDIO_FILTER_EXECUTABLE)};
        for (const std::string& word : words) {
            argv.push_back(const_cast<char*>(word.c_str()));
        }
        argv.push_back(nullptr);
        mChild = fork();
        if (mChild == 0) {
            dup2(open(in.c_str(), O_RDONLY | O_CLOEXEC), STDIN_FILENO);
            close(STDOUT_FILENO);
            if (!out.empty()) {
                open(out.c_str(), O_WRONLY | O_CREAT, 0666);
            }
            dup2(open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666), STDERR_FILENO);
            const rlimit limit = {largestFile, largestFile};
            setrlimit(RLIMIT_FSIZE, &limit);
            execv(argv[0], argv.data());
            _exit(127);
        }
    }
    ~Process() {
        if (!mEnded) {
            kill(mChild, SIGKILL);
            Wait();
        }
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void Signal(int number) const { kill(mChild, number); }

    bool HasEnded() {
        mEnded = mEnded || waitpid(mChild, &mStatus, WNOHANG) == mChild;
        return mEnded;
    }

    /// @return the exit status, or minus the number of the signal that ended it
    int Wait() {
        if (!mEnded) {
            waitpid(mChild, &mStatus, 0);
            mEnded = true;
        }
        return WIFEXITED(mStatus) ? WEXITSTATUS(mStatus) : -WTERMSIG(mStatus);
    }

    std::string Err() const { return ReadFile(mErr); }

private:
    std::string mErr;
    pid_t mChild = -1;
    int mStatus = 0;
    bool mEnded = false;
};
