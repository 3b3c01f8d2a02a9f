#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "audio_filter/plain_filter.h"
#include "common/result_code.h"
#include "soak/stream.h"

inline void Require(bool holds, const std::string& what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

/// A filter whose every call is checked: against the reference model if there is one, and always for
/// failed calls and lost or gained samples. Throws the first fault.
class WatchedFilter {
public:
    explicit WatchedFilter(bool withModel)
        : mModel(withModel ? std::make_unique<PlainFilter>() : nullptr) {}

    void Start(const Stream& stream, ProcessSwitchMap switches, bool clearFirst) {
        mStream = stream;
        mIn = mOut = 0;
        if (clearFirst) {
            Clear();
        }
        ProcessSwitchMap same = switches;
        const int code = mFilter.Init(stream.rate, stream.channels, stream.fmt, &switches);
        Require(code == RESULT_OK, "Init returned " + std::to_string(code));
        if (mModel) {
            mModel->Init(stream.rate, stream.channels, stream.fmt, &same);
            mModel->messages.clear();
            Require(same == switches, "Init switched otherwise");
        }
    }

    void Clear() {
        mFilter.Clear();
        if (mModel) {
            mModel->Clear();
        }
    }

    void Switch(ProcessSwitchMap switches) {
        ProcessSwitchMap same = switches;
        mFilter.SetMethod(&switches);
        if (mModel) {
            mModel->SetMethod(&same);
            mModel->messages.clear();
            Require(same == switches, "SetMethod switched otherwise");
        }
    }

    void Tune(ProcessParam param, ProcessType type) {
        const bool taken = mFilter.SetParameter(&param, type);
        Require(!mModel || mModel->SetParameter(param.gain, param.level, type) == taken,
                "SetParameter returned otherwise");
    }

    /// Processes a block as a host does, resampling it on a hand-off.
    void Block(const Recording& recording, std::int64_t position, int frames,
               std::vector<char>& result) {
        PlainFilter::Call call = Given(recording.Blocks(mStream, position, frames));
        std::vector<char> in = call.in;
        std::vector<char> out = call.out;
        int size = call.size;
        AVParam param;
        int code = mFilter.Process(in.data(), out.data(), size, mStream.sources, param, 0);
        Compare(code, out, size, call, &PlainFilter::Process);
        mDetectedMusic = mDetectedMusic || mFilter.mIsMusic;
        if (code == RESULT_NEEDS_RESAMPLING) {
            const std::vector<char> block = Resampled(position, out, size);
            frames = static_cast<int>(block.size()) / mStream.BytesOf(1);
            size = 0;
            if (frames > 0) {
                call = Given(block);
                call.param = param;
                call.sources = {AV_SOURCE_MICROPHONE};
                out = call.out;
                size = call.size;
                in = block;
                code = mFilter.ProcessResample(in.data(), out.data(), size, call.sources, param, 0);
                Compare(code, out, size, call, &PlainFilter::ProcessResample);
                Require(code == RESULT_RESAMPLED,
                        "ProcessResample returned " + std::to_string(code));
            }
        } else {
            Require(code == RESULT_OK, "Process returned " + std::to_string(code));
        }
        result.insert(result.end(), out.begin(), out.begin() + size);
        mIn += frames;
        mOut += size / mStream.BytesOf(1);
        heldBack = std::max(heldBack, mIn - mOut);
        Require(mIn - mOut >= 0 && mIn - mOut < mStream.processRate / 100,
                std::to_string(mIn - mOut) + " samples in did not come out");
    }

    /// A call that is refused or bypasses the chain, and leaves no state.
    void Aside(const Recording& recording, std::mt19937& random) {
        PlainFilter::Call call = Given(recording.Blocks(mStream, 0, 100));
        const int choice = RandomInt(random, 0, 4);
        if (choice == 0) {
            call.size = RandomInt(random, -1, 0);
        } else if (choice == 1) {
            call.size = mStream.BytesOf(mStream.rate) * static_cast<int>(call.sources.size()) + 1;
        } else if (choice == 2) {
            call.sources.clear();
        }
        std::vector<char> in = call.in;
        std::vector<char> out = call.out;
        int size = call.size;
        const bool delay = choice > 2;
        AVParam param;
        const int code = delay
                             ? mFilter.SyncProcessDelay(in.data(), out.data(), size, call.sources)
                             : mFilter.Process(in.data(), out.data(), size, call.sources, param, 0);
        Compare(code, out, size, call,
                delay ? &PlainFilter::SyncProcessDelay : &PlainFilter::Process);
    }

    bool DetectedMusic() const { return mDetectedMusic; }
    void ForgetMusic() { mDetectedMusic = false; }

    /// Calls that returned each code. All codes are present from the start, so that none allocates
    /// later.
    std::map<int, std::int64_t> codes = {{0, 0}, {2, 0}, {3, 0}, {4, 0}, {9, 0}, {12, 0}};
    std::int64_t heldBack = 0;  ///< samples of a channel, at most

private:
    PlainFilter::Call Given(std::vector<char> blocks) const {
        PlainFilter::Call call;
        call.in = std::move(blocks);
        call.size = static_cast<int>(call.in.size());
        call.sources = mStream.sources;
        call.out.assign(call.in.size() + static_cast<std::size_t>(mStream.BytesOf(320)), '\x5A');
        return call;
    }

    void Compare(int code, const std::vector<char>& out, int size, PlainFilter::Call& call,
                 int (PlainFilter::*model)(PlainFilter::Call&)) {
        ++codes[code];
        if (!mModel) {
            return;
        }
        const int expected = (*mModel.*model)(call);
        mModel->messages.clear();
        Require(code == expected,
                "a call returned " + std::to_string(code) + ", not " + std::to_string(expected));
        Require(size == call.size && out == call.out, "a call gave other bytes than the model");
    }

    /// Resamples to the rate of the suppressor by repeating or dropping samples.
    std::vector<char> Resampled(std::int64_t position, const std::vector<char>& block,
                                int size) const {
        const std::int64_t rate = mStream.rate;
        const std::int64_t wanted = mStream.processRate;
        const int bytes = mStream.BytesOf(1);
        const std::int64_t end = position + size / bytes;
        std::vector<char> resampled;
        for (std::int64_t i = (position * wanted + rate - 1) / rate; i * rate < end * wanted; ++i) {
            const auto sample = block.begin() + (i * rate / wanted - position) * bytes;
            resampled.insert(resampled.end(), sample, sample + bytes);
        }
        return resampled;
    }

    AudioFilter mFilter;
    std::unique_ptr<PlainFilter> mModel;
    Stream mStream;
    std::int64_t mIn = 0;
    std::int64_t mOut = 0;
    bool mDetectedMusic = false;
};
