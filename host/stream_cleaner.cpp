#include "host/stream_cleaner.h"

#include <algorithm>
#include <utility>

namespace {

AudioFormat AtRate(AudioFormat format, int sampleRate) {
    format.sampleRate = sampleRate;
    return format;
}

template <typename Sample>
std::int64_t FramesOf(const std::vector<Sample>& block, const AudioFormat& format) {
    return static_cast<std::int64_t>(block.size()) / format.channels;
}

template <typename Sample>
std::vector<Sample> Silence(std::int64_t frames, const AudioFormat& format) {
    return std::vector<Sample>(static_cast<std::size_t>(frames * format.channels));
}

/// Leaves at most that many frames, and says how many.
template <typename Sample>
std::int64_t Limit(std::vector<Sample>& block, std::int64_t frames, const AudioFormat& format) {
    const std::int64_t kept = std::min(frames, FramesOf(block, format));
    block.resize(static_cast<std::size_t>(kept * format.channels));
    return kept;
}

/// Drops the first frames, up to that many, and says how many.
template <typename Sample>
std::int64_t Drop(std::vector<Sample>& block, std::int64_t frames, const AudioFormat& format) {
    const std::int64_t dropped = std::min(frames, FramesOf(block, format));
    block.erase(block.begin(),
                block.begin() + static_cast<std::ptrdiff_t>(dropped * format.channels));
    return dropped;
}

template <typename Sample>
std::vector<Sample> Convert(RateConverter& converter, const std::vector<Sample>& block, bool last) {
    std::vector<float> floats(block.size());
    std::transform(block.begin(), block.end(), floats.begin(), [](Sample s) { return ToFloat(s); });
    floats = converter.Convert(floats, last);
    std::vector<Sample> converted(floats.size());
    std::transform(floats.begin(), floats.end(), converted.begin(), FromFloat<Sample>);
    return converted;
}

}  // namespace

template <typename Sample>
StreamCleaner<Sample>::StreamCleaner(const ChainSettings& settings, const AudioFormat& format,
                                     Sink sink)
    : mFormat(format),
      mChainFormat(AtRate(format, UnitChain::ProcessingRate(settings, format.sampleRate))),
      mChain(settings, mChainFormat),
      mSink(std::move(sink)),
      mDelay(mChain.DelayFrames()) {
    if (mChainFormat.sampleRate != mFormat.sampleRate) {
        mToChain.emplace(mFormat.sampleRate, mChainFormat.sampleRate, mFormat.channels);
        mFromChain.emplace(mChainFormat.sampleRate, mFormat.sampleRate, mFormat.channels);
    }
}

template <typename Sample>
void StreamCleaner<Sample>::Push(const std::vector<Sample>& block) {
    mFramesIn += FramesOf(block, mFormat);
    ToChain(mToChain ? Convert(*mToChain, block, false) : block);
}

template <typename Sample>
void StreamCleaner<Sample>::Finish() {
    if (mToChain) {
        ToChain(Convert<Sample>(*mToChain, {}, true));
    }
    // Silence pushes out what the chain holds back: the delay, and a frame that is not full yet.
    while (mChainOut < mChainIn) {
        Run(Silence<Sample>(mChainFormat.sampleRate / 100, mChainFormat));
    }
    if (mFromChain) {
        Emit(Convert<Sample>(*mFromChain, {}, true));
    }
    if (mFramesOut < mFramesIn) {  // a frame that two conversions have rounded away
        Emit(Silence<Sample>(mFramesIn - mFramesOut, mFormat));
    }
}

template <typename Sample>
void StreamCleaner<Sample>::ToChain(const std::vector<Sample>& block) {
    mChainIn += FramesOf(block, mChainFormat);
    Run(block);
}

template <typename Sample>
void StreamCleaner<Sample>::Run(const std::vector<Sample>& block) {
    std::vector<Sample> processed = mChain.Process(block);
    mDelay -= Drop(processed, mDelay, mChainFormat);
    mChainOut += Limit(processed, mChainIn - mChainOut, mChainFormat);
    Emit(mFromChain ? Convert(*mFromChain, processed, false) : std::move(processed));
}

template <typename Sample>
void StreamCleaner<Sample>::Emit(std::vector<Sample> block) {
    mFramesOut += Limit(block, mFramesIn - mFramesOut, mFormat);
    mSink(block);
}

template class StreamCleaner<short>;
template class StreamCleaner<float>;
