/// A day of audio through streams, faster than real time: random blocks, and settings that change once a second.
///
///     stream_soak MINUTES [of audio, for the first format; a twenty-fourth for each other]
///
/// Prints a summary. Exits with 1 at the first fault: a lag other than the told latency, a sample that is not finite
/// or beyond full scale, frames that are not returned by Drain, or memory that grows after the first ten seconds.

#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/result_code.h"
#include "stream/signals.h"
#include "stream/stream.h"
#include "support/allocations.h"
#include "support/seed.h"

namespace audio_filter {

namespace {

void Require(bool holds, const std::string& what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

std::ptrdiff_t ResidentKiB() {
    std::ptrdiff_t all = 0;
    std::ptrdiff_t resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident * sysconf(_SC_PAGESIZE) / 1024;
}

/// One uninterrupted stream of floats. Its right channel is a quieter copy of the left one.
class StreamSoak {
public:
    explicit StreamSoak(const StreamFormat& format)
        : mFormat(format),
          mRate(static_cast<std::size_t>(format.sampleRate)),
          mChannels(static_cast<std::size_t>(format.channels)),
          mRecording(Bursts(61 * mRate + 7, format.sampleRate, 0.5F, 0.02F, 1)) {
        Require(mStream.Init(format, mSettings) == RESULT_OK, "Init failed");
        mLatency = static_cast<std::size_t>(mStream.Latency());
        mBuffer.resize(kLongest * mChannels);
        mWindow.reserve(mRate / 4);
    }

    void Run(double minutes) {
        const auto end = static_cast<std::size_t>(minutes * 60.0 * static_cast<double>(mRate));
        std::optional<Allocations> allocations;
        while (mAt < end) {
            if (mAt >= mNextSecond) {
                Change();
                mNextSecond += mRate;
            }
            if (!allocations && mAt > 10 * mRate) {
                allocations.emplace();
                mResident = ResidentKiB();
            }
            Block(std::min<std::size_t>(static_cast<std::size_t>(RandomInt(mRandom, 1, kLongest)),
                                        end - mAt));
        }
        Require(!allocations || allocations->Held() == 0, "memory grew");
        Require(mChecks > 0, "no lag was measured");
        mGrowth = ResidentKiB() - mResident.value_or(ResidentKiB());
        Require(mGrowth <= kRounding, "resident memory grew");
        CheckDrain();
    }

    void Print(std::ostream& out) const {
        out << mFormat.sampleRate << " Hz, " << mFormat.channels
            << " channels: " << static_cast<double>(mAt) / static_cast<double>(mRate) / 3600.0
            << " h; lag of " << mLatency << " frames in " << mChecks << " measurements, at most "
            << mWorst << " off; peak " << mPeak << "; " << mChanges << " changes, " << mEvents
            << " events; resident memory " << (mGrowth > 0 ? "+" : "") << mGrowth << " KiB\n";
    }

private:
    void Change() {
        mSettings.suppression.reset();
        if (RandomInt(mRandom, 0, 4) > 0) {
            mSettings.suppression = RandomInt(mRandom, 0, 3);
        }
        mSettings.gain.reset();
        if (RandomInt(mRandom, 0, 1) == 1) {
            mSettings.gain = static_cast<float>(RandomInt(mRandom, 0, 10)) / 10.0F;
        }
        mSettings.phaseCheck = RandomInt(mRandom, 0, 1) == 1;
        mSettings.music = RandomInt(mRandom, 0, 9) == 0 ? MusicMode::kKeep : MusicMode::kIgnore;
        mSettings.reversed = RandomInt(mRandom, 0, 3) == 0 ? 1 : 0;
        mStream.SetSettings(mSettings);
        ++mChanges;
        for (StreamEvent event; mStream.NextEvent(event);) {
            ++mEvents;
        }
    }

    float Input(std::size_t at) const { return mRecording[at % mRecording.size()]; }

    void Block(std::size_t frames) {
        for (std::size_t i = 0; i < frames; ++i) {
            const float sample = Input(mAt + i);
            mBuffer[i * mChannels] = sample;
            if (mChannels > 1) {
                mBuffer[i * mChannels + 1] = 0.7F * sample;
            }
        }
        const void* in[] = {mBuffer.data()};
        void* out[] = {mBuffer.data()};
        Require(mStream.Process(in, out, static_cast<int>(frames)) == RESULT_OK, "Process failed");
        for (std::size_t i = 0; i < frames * mChannels; ++i) {
            Require(std::isfinite(mBuffer[i]), "a sample is not finite");
            mPeak = std::max(mPeak, std::abs(mBuffer[i]));
        }
        Require(mPeak <= kFullScale, "a sample is beyond full scale");
        for (std::size_t i = 0; i < frames; ++i) {
            Watch(mAt + i, mBuffer[i * mChannels]);
        }
        mAt += frames;
    }

    /// Gathers a quarter of a second of every ten of output and measures its lag.
    void Watch(std::size_t at, float sample) {
        const std::size_t inTen = at % (10 * mRate);
        if (inTen < mRate || inTen >= mRate + mRate / 4) {
            return;
        }
        mWindow.push_back(sample);
        if (inTen + 1 < mRate + mRate / 4) {
            return;
        }
        const std::size_t begin = at + 1 - mWindow.size();
        double highest = 0.0;
        int best = -kAround;
        for (int off = -kAround; off <= kAround; ++off) {
            double sum = 0.0;
            for (std::size_t i = 0; i < mWindow.size(); ++i) {
                const std::size_t from = begin + i - mLatency - static_cast<std::size_t>(off);
                sum += static_cast<double>(mWindow[i] * Input(from));
            }
            if (std::abs(sum) > highest) {
                highest = std::abs(sum);
                best = off;
            }
        }
        mWindow.clear();
        ++mChecks;
        mWorst = std::max(mWorst, std::abs(best));
        Require(mWorst <= 1, "the lag is " + std::to_string(best) + " frames off at frame " +
                                 std::to_string(at));
    }

    void CheckDrain() {
        void* out[] = {mBuffer.data()};
        std::size_t drained = 0;
        while (const int frames = mStream.Drain(out, 100)) {
            drained += static_cast<std::size_t>(frames);
        }
        Require(drained == mLatency, "Drain returned " + std::to_string(drained) + " frames");
    }

    static constexpr int kLongest = 2000;             ///< frames of a block
    static constexpr std::ptrdiff_t kRounding = 256;  ///< KiB
    static constexpr int kAround = 20;                ///< frames around the told latency
    /// Bands that are added up may exceed full scale a little.
    static constexpr float kFullScale = 1.2F;

    StreamFormat mFormat;
    std::size_t mRate;
    std::size_t mChannels;
    std::vector<float> mRecording;
    std::mt19937 mRandom = SeededRandom();
    Stream mStream;
    StreamSettings mSettings;
    std::vector<float> mBuffer;
    std::vector<float> mWindow;
    std::size_t mLatency = 0;
    std::size_t mAt = 0;
    std::size_t mNextSecond = 0;
    std::size_t mChecks = 0;
    std::size_t mChanges = 0;
    std::size_t mEvents = 0;
    std::optional<std::ptrdiff_t> mResident;  ///< KiB, after ten seconds
    std::ptrdiff_t mGrowth = 0;
    int mWorst = 0;
    float mPeak = 0.0F;
};

/// @return whether there was no fault
bool RunOne(const StreamFormat& format, double minutes) {
    StreamSoak soak(format);
    try {
        soak.Run(minutes);
    } catch (const std::exception& fault) {
        soak.Print(std::cerr);
        std::cerr << "stream_soak: " << fault.what() << "\n";
        return false;
    }
    soak.Print(std::cout);
    return true;
}

}  // namespace

}  // namespace audio_filter

int main(int argc, char** argv) {
    using audio_filter::RunOne;
    const double minutes = argc == 2 ? std::strtod(argv[1], nullptr) : 0.0;
    if (!(minutes >= 10.0)) {
        std::cerr << "usage: stream_soak MINUTES, at least 10\n";
        return 2;
    }
    const auto format = [](int rate, int channels) {
        return audio_filter::StreamFormat{
            .sampleRate = rate, .channels = channels, .samples = SAMPLE_FMT_FLT};
    };
    const bool good = RunOne(format(48000, 1), minutes) && RunOne(format(44100, 2), minutes / 24) &&
                      RunOne(format(16000, 1), minutes / 24) &&
                      RunOne(format(96000, 1), minutes / 24);
    return good ? 0 : 1;
}
