#include "host/aligned_stream.h"

#include <algorithm>
#include <string>
#include <type_traits>

#include "common/result_code.h"
#include "host/failure.h"

namespace {

constexpr int kMaxFrames = 192000;

}  // namespace

template <typename Sample>
AlignedStream<Sample>::AlignedStream(const AudioFormat& format, std::size_t sources,
                                     const audio_filter::StreamSettings& settings)
    : mSources(sources), mChannels(static_cast<std::size_t>(format.channels)) {
    const bool s16 = std::is_same_v<Sample, short>;
    const int code = mStream.Init({.sampleRate = format.sampleRate,
                                   .channels = format.channels,
                                   .samples = s16 ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT,
                                   .sources = static_cast<int>(sources),
                                   .maxFrames = kMaxFrames},
                                  settings);
    if (code != RESULT_OK) {
        throw Failure("cannot process " + std::to_string(format.sampleRate) +
                      " Hz: the rate must be from 8000 to 192000 Hz");
    }
    mToDrop = static_cast<std::size_t>(mStream.Latency());
}

template <typename Sample>
void AlignedStream<Sample>::Prime(const Block& blocks) {
    mPrimed += Process(blocks).size() / mChannels;
}

template <typename Sample>
auto AlignedStream<Sample>::Push(const Block& blocks) -> Block {
    return Drop(Process(blocks));
}

template <typename Sample>
auto AlignedStream<Sample>::Drain() -> Block {
    Block block(static_cast<std::size_t>(mStream.Latency()) * mChannels);
    void* const out[] = {block.data()};
    const int frames = mStream.Drain(out, mStream.Latency());
    block.resize(static_cast<std::size_t>(frames) * mChannels);
    return Drop(std::move(block));
}

template <typename Sample>
auto AlignedStream<Sample>::Process(const Block& blocks) -> Block {
    const std::size_t perSource = blocks.size() / mSources;
    const std::size_t frames = perSource / mChannels;
    Block out(perSource);
    for (std::size_t done = 0; done < frames; done += kMaxFrames) {
        std::vector<const void*> in;
        for (std::size_t source = 0; source < mSources; ++source) {
            in.push_back(blocks.data() + source * perSource + done * mChannels);
        }
        void* const to[] = {out.data() + done * mChannels};
        const std::size_t count = std::min<std::size_t>(kMaxFrames, frames - done);
        mStream.Process(in.data(), to, static_cast<int>(count));
    }
    return out;
}

template <typename Sample>
auto AlignedStream<Sample>::Drop(Block block) -> Block {
    const std::size_t dropped = std::min(mToDrop, block.size() / mChannels);
    mToDrop -= dropped;
    block.erase(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(dropped * mChannels));
    return block;
}

template class AlignedStream<short>;
template class AlignedStream<float>;
