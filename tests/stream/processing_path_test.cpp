/// Counts the allocations, locks and system calls of Stream::Process and Stream::Drain. It replaces functions of
/// the C library and is therefore a separate executable.

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "common/sample_format.h"
#include "stream/stream.h"
#include "support/allocations.h"
#include "support/posix/lock_calls.h"
#include "support/signals.h"

namespace audio_filter {

namespace {

/// A stream, and the buffers of its host.
class Host {
public:
    explicit Host(const StreamFormat& format) : mFormat(format) {
        mStream.Init(format, {});
        const bool planar = internal::IsPlanar(format.samples);
        const std::size_t buffers = planar ? static_cast<std::size_t>(format.channels) : 1;
        const std::size_t width = planar ? 1 : static_cast<std::size_t>(format.channels);
        std::mt19937 random(3);
        const std::size_t samples = static_cast<std::size_t>(format.sampleRate) * width;
        const std::vector<float> speech = NoisySpeech(random, samples, format.sampleRate);
        const std::vector<short> shorts = As<short>(speech);
        const bool s16 = internal::IsS16(format.samples);
        const char* bytes = s16 ? reinterpret_cast<const char*>(shorts.data())
                                : reinterpret_cast<const char*>(speech.data());
        mFrameBytes = width * (s16 ? sizeof(short) : sizeof(float));
        mSecond.assign(bytes, bytes + mFrameBytes * static_cast<std::size_t>(format.sampleRate));
        mOut.assign(buffers, std::vector<char>(mSecond.size()));
        mFrom.resize(buffers * static_cast<std::size_t>(format.sources));
        for (std::vector<char>& buffer : mOut) {
            mTo.push_back(buffer.data());
        }
    }

    /// Plays some seconds in blocks of 1 to 1000 frames, changes every setting, and drains.
    void Play(int seconds) {
        std::size_t block = 0;
        for (int second = 0; second < seconds; ++second) {
            const auto rate = static_cast<std::size_t>(mFormat.sampleRate);
            for (std::size_t at = 0; at < rate; ++block) {
                if (block % 4 == 0) {
                    Change(static_cast<int>(block / 4));
                }
                const std::size_t count = std::min<std::size_t>(1 + block * 37 % 1000, rate - at);
                for (const void*& from : mFrom) {
                    from = mSecond.data() + at * mFrameBytes;
                }
                mStream.Process(mFrom.data(), mTo.data(), static_cast<int>(count));
                at += count;
            }
            mStream.Drain(mTo.data(), 100);
            StreamEvent event;
            while (mStream.NextEvent(event)) {
                ++mEvents;
            }
        }
    }

    int Events() const { return mEvents; }

private:
    void Change(int round) {
        StreamSettings settings;
        settings.suppression.reset();
        if (round % 5 != 4) {
            settings.suppression = round % 5;
        }
        if (round % 3 != 2) {
            settings.gain = static_cast<float>(round % 10) / 10.0F;
        }
        settings.phaseCheck = round % 2 == 0;
        settings.mix = round % 7 < 4;
        settings.music = round % 11 < 9 ? MusicMode::kKeep : MusicMode::kIgnore;
        settings.highBand = round % 13 < 6;
        settings.reversed = static_cast<std::uint16_t>(round % 6);
        mStream.SetSettings(settings);
    }

    StreamFormat mFormat;
    Stream mStream;
    std::size_t mFrameBytes = 0;
    std::vector<char> mSecond;
    std::vector<std::vector<char>> mOut;
    std::vector<const void*> mFrom;
    std::vector<void*> mTo;
    int mEvents = 0;
};

/// One rate of every class, up to 3 channels and sources, and every format at 48000 Hz.
std::vector<StreamFormat> Formats() {
    std::vector<StreamFormat> formats;
    for (const int rate : {8000, 16000, 48000, 96000, 144000, 192000}) {
        for (const SampleFmt samples :
             {SAMPLE_FMT_S16, SAMPLE_FMT_FLT, SAMPLE_FMT_S16P, SAMPLE_FMT_FLTP}) {
            if (rate != 48000 && samples != SAMPLE_FMT_FLTP) {
                continue;
            }
            for (const int count : {1, 2, 3}) {
                formats.push_back({.sampleRate = rate,
                                   .channels = count,
                                   .samples = samples,
                                   .sources = 4 - count});
            }
        }
    }
    return formats;
}

std::string Named(const StreamFormat& format) {
    return std::to_string(format.sampleRate) + " Hz, " + std::to_string(format.channels) +
           " channels, format " + std::to_string(format.samples);
}

TEST(StreamProcessingPath, AllocatesNothingAndTakesNoLockAtAnyRateFormatSettingOrSwitch) {
    for (const StreamFormat& format : Formats()) {
        Host host(format);
        const LockCalls calls;
        Allocations allocations;
        host.Play(2);
        EXPECT_EQ(allocations.Stop(), 0U) << Named(format);
        EXPECT_EQ(calls.Locks(), 0) << Named(format);
        EXPECT_EQ(calls.Waits(), 0) << Named(format);
        EXPECT_GT(host.Events(), 10) << Named(format);
    }
}

constexpr int kNoFilter = 3;  ///< the process could not be restricted

/// Runs an action in a process of its own, which the kernel kills at any system call but its end.
/// @return the status of the process
int WithoutSystemCalls(const std::function<void()>& action) {
    const pid_t child = fork();
    if (child == 0) {
        sock_filter code[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                              BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit, 0, 1),
                              BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
                              BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS)};
        const sock_fprog filter = {.len = 4, .filter = code};
        if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
            prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0) {
            _exit(kNoFilter);
        }
        action();
        syscall(SYS_exit, 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

TEST(StreamProcessingPath, MakesNoSystemCallAtAnyRateFormatSettingOrSwitch) {
    for (const StreamFormat& format : Formats()) {
        Host host(format);
        const int status = WithoutSystemCalls([&] { host.Play(1); });
        EXPECT_TRUE(WIFEXITED(status)) << "killed: " << Named(format);
        EXPECT_EQ(WEXITSTATUS(status), 0) << Named(format);
    }
    EXPECT_TRUE(WIFSIGNALED(WithoutSystemCalls([] { getppid(); })));
}

}  // namespace

}  // namespace audio_filter
