/// Hours of audio through one filter, faster than real time: streams of random formats in blocks of
/// random sizes, with changing switches and parameters. A reference model predicts every result, and
/// a second filter processes the same audio in blocks of 10 ms.
///
///     soak MINUTES [of audio]
///
/// Prints a summary. Exits with 1 at the first fault: a code or byte that differs from the model,
/// samples lost or gained, output that depends on the block sizes, or memory that grows after the
/// first minute.

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "soak/stream.h"
#include "soak/watched_filter.h"
#include "support/allocations.h"

namespace {

std::size_t ResidentKiB() {
    std::size_t all = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

std::size_t HeapKiB() {
    const struct mallinfo2 heap = mallinfo2();
    return (heap.uordblks + heap.hblkhd) / 1024;
}

class Soak {
public:
    explicit Soak(double minutes) : mMinutes(minutes) {}

    void Run() {
        while (Minutes() < mMinutes) {
            Start();
            const int stretches = IsFirst() ? 1 : RandomInt(mRandom, 1, 40);
            for (int stretch = 0; stretch < stretches; ++stretch) {
                Stretch();
            }
            Weigh();
        }
    }

    void Print(std::ostream& out) const {
        out << "audio: " << mSeconds / 3600.0 << " h in " << mStreams << " streams, " << mSwitches
            << " changes of switches and parameters\n"
            << "calls:";
        for (const auto& [code, count] : mFilter->codes) {
            out << " " << count << " returned " << code << ";";
        }
        out << " all equal to the model, to the byte\n"
            << "buffered: at most " << mFilter->heldBack << " samples of a channel\n"
            << "equal to the same audio in blocks of 10 ms: " << mEqualSeconds / 3600.0
            << " h; not comparable, because phase correction and music verdicts depend on blocks: "
            << (mSeconds - mEqualSeconds) / 3600.0 << " h\n"
            << "memory, repeating one stream: " << mHeld[0]
            << " blocks more than at the start in the first minute, " << mHeld[1]
            << " after it; heap " << mHeap[0] << " and " << mHeap[1] << " KiB, resident "
            << mResident[0] << " and " << mResident[1] << " KiB\n";
    }

private:
    double Minutes() const { return mSeconds / 60.0; }

    ProcessSwitchMap RandomSwitches() {
        ProcessSwitchMap switches;
        for (const ProcessType kind : {AP_DENOISE, AP_PHASE_CHECK, AP_GAIN, AP_MIXING}) {
            switches[kind] = RandomInt(mRandom, 0, 3) > 0;
        }
        return switches;
    }

    /// The largest streams come first, so that the first minute reaches the peak of memory.
    bool IsFirst() const { return mStreams <= 3; }

    static Stream Largest(int rate) {
        Stream stream;
        stream.rate = rate;
        stream.handedBack = rate > 44100;
        stream.channels = 2;
        stream.fmt = SAMPLE_FMT_FLT;
        stream.width = 4;
        stream.sources.assign(4, AV_SOURCE_MICROPHONE);
        return stream;
    }

    void Start() {
        static constexpr int kRates[] = {32000, 44100, 96000};
        mStream = mStreams < 3 ? Largest(kRates[mStreams]) : Stream::Random(mRandom);
        ++mStreams;
        mPosition = 0;
        const ProcessSwitchMap switches = RandomSwitches();
        const bool clearFirst = RandomInt(mRandom, 0, 1) == 1;
        mFilter->Start(mStream, switches, clearFirst);
        mWhole->Start(mStream, switches, clearFirst);
        mFilter->ForgetMusic();
        mWhole->ForgetMusic();
    }

    /// A whole number of 10 ms blocks, between two changes of the switches.
    void Stretch() {
        if (RandomInt(mRandom, 0, 2) == 0) {
            Change();
        }
        const int blocks = IsFirst() ? kLongest : RandomInt(mRandom, 1, kLongest);
        const std::int64_t end = mPosition + std::int64_t{blocks} * mStream.FramesPer10Ms();
        std::vector<char> whole;
        for (std::int64_t at = mPosition; at < end; at += mStream.FramesPer10Ms()) {
            mWhole->Block(mRecording, at, mStream.FramesPer10Ms(), whole);
        }
        std::vector<char> result;
        for (std::int64_t at = mPosition; at < end;) {
            const int block = RandomBlock(end - at);
            mFilter->Block(mRecording, at, block, result);
            at += block;
            if (RandomInt(mRandom, 0, 99) == 0) {
                mFilter->Aside(mRecording, mRandom);
            }
        }
        const double seconds = static_cast<double>(end - mPosition) / mStream.rate;
        // Phase correction and the level during music change between blocks.
        if (!mStream.opposed && !mFilter->DetectedMusic() && !mWhole->DetectedMusic()) {
            Require(result == whole,
                    "blocks of random sizes gave other bytes than blocks of 10 ms");
            mEqualSeconds += seconds;
        }
        mSeconds += seconds;
        mPosition = end;
    }

    /// 1 sample to one second, log-uniform; less where resampling would make a block longer than the
    /// second that the filter accepts.
    int RandomBlock(std::int64_t left) {
        const double rate = mStream.rate;
        const double longest = std::min(rate, rate * rate / mStream.processRate);
        const double share = std::uniform_real_distribution<double>(0.0, 1.0)(mRandom);
        const auto block = static_cast<std::int64_t>(std::pow(longest, share));
        return static_cast<int>(std::clamp<std::int64_t>(block, 1, left));
    }

    void Change() {
        ++mSwitches;
        const ProcessSwitchMap switches = RandomSwitches();
        const ProcessParam param = {static_cast<float>(RandomInt(mRandom, 0, 10)) / 10.0F,
                                    RandomInt(mRandom, 0, 3)};
        for (WatchedFilter* filter : {mFilter.get(), mWhole.get()}) {
            filter->Switch(switches);
            filter->Tune(param, AP_GAIN);
            filter->Tune(param, AP_DENOISE);
        }
    }

    /// The memory in use after both filters switched to a fixed stream.
    void Weigh() {
        static const Stream kReference = Largest(44100);
        for (WatchedFilter* filter : {mFilter.get(), mWhole.get()}) {
            filter->Start(kReference, {}, true);
        }
        malloc_trim(0);  // returns free memory, so that it is not resident
        const int after = Minutes() > 1.0 ? 1 : 0;
        mHeld[after] = std::max(mHeld[after], mAllocations.Held());
        mHeap[after] = std::max(mHeap[after], HeapKiB());
        mResident[after] = std::max(mResident[after], ResidentKiB());
        Require(mHeld[1] <= mHeld[0] && mHeap[1] <= mHeap[0] + kRounding, "memory grew");
    }

    static constexpr int kLongest = 500;           ///< 10 ms blocks between two changes
    static constexpr std::size_t kRounding = 256;  ///< KiB: large allocations round up to pages

    const double mMinutes;
    const Allocations mAllocations;
    std::mt19937 mRandom = SeededRandom();
    const Recording mRecording;
    std::unique_ptr<WatchedFilter> mFilter = std::make_unique<WatchedFilter>(true);
    std::unique_ptr<WatchedFilter> mWhole = std::make_unique<WatchedFilter>(false);
    Stream mStream;
    std::int64_t mPosition = 0;
    double mSeconds = 0.0;
    double mEqualSeconds = 0.0;
    std::int64_t mStreams = 0;
    std::int64_t mSwitches = 0;
    std::ptrdiff_t mHeld[2] = {};
    std::size_t mHeap[2] = {};
    std::size_t mResident[2] = {};
};

}  // namespace

int main(int argc, char** argv) {
    const double minutes = argc == 2 ? std::strtod(argv[1], nullptr) : 0.0;
    if (!(minutes > 0.0)) {
        std::cerr << "usage: soak MINUTES\n";
        return 2;
    }
    Soak soak(minutes);
    try {
        soak.Run();
    } catch (const std::exception& fault) {
        soak.Print(std::cerr);
        std::cerr << "soak: " << fault.what() << "\n";
        return 1;
    }
    soak.Print(std::cout);
    return 0;
}
