#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <random>
#include <type_traits>
#include <vector>

#include "common/result_code.h"
#include "common/sample_format.h"
#include "stream/stream.h"

/// Plays signals through a stream, as a host does.
namespace audio_filter {

/// What a host passes: one buffer per source, or per channel of each source when planar.
template <typename Sample>
using Buffers = std::vector<std::vector<Sample>>;

template <typename Sample>
constexpr SampleFmt Interleaved() {
    return std::is_same_v<Sample, float> ? SAMPLE_FMT_FLT : SAMPLE_FMT_S16;
}

template <typename Sample>
constexpr SampleFmt Planar() {
    return std::is_same_v<Sample, float> ? SAMPLE_FMT_FLTP : SAMPLE_FMT_S16P;
}

inline StreamFormat FormatOf(int rate, int channels, SampleFmt samples, int sources = 1) {
    return {.sampleRate = rate, .channels = channels, .samples = samples, .sources = sources};
}

/// Takes all events that are waiting.
inline std::vector<StreamEvent> EventsOf(Stream& stream) {
    std::vector<StreamEvent> events;
    for (StreamEvent event; stream.NextEvent(event);) {
        events.push_back(event);
    }
    return events;
}

/// Settings with every stage off.
inline StreamSettings AllOff() {
    return {.suppression = {}, .gain = {}, .phaseCheck = false, .mix = false};
}

inline StreamSettings Suppressing(int level) {
    StreamSettings settings = AllOff();
    settings.suppression = level;
    return settings;
}

/// Settings that apply before a frame.
struct Change {
    std::size_t frame;
    StreamSettings settings;
};

/// Returns the length of the host's next block, in frames.
using BlockLengths = std::function<std::size_t()>;

inline BlockLengths Blocks(std::size_t frames) {
    return [frames] { return frames; };
}

inline BlockLengths RandomBlocks(std::uint32_t seed) {
    return [random = std::minstd_rand(seed)]() mutable {
        return std::uniform_int_distribution<std::size_t>(1, 2000)(random);
    };
}

inline std::size_t Width(const StreamFormat& format) {
    return static_cast<std::size_t>(internal::IsPlanar(format.samples) ? 1 : format.channels);
}

/// @return the output, as long as the input
template <typename Sample>
Buffers<Sample> Play(Stream& stream, const StreamFormat& format, const Buffers<Sample>& in,
                     const BlockLengths& lengths = Blocks(480),
                     const std::vector<Change>& changes = {}) {
    const std::size_t width = Width(format);
    const std::size_t frames = in[0].size() / width;
    Buffers<Sample> out(in.size() / static_cast<std::size_t>(format.sources),
                        std::vector<Sample>(in[0].size(), Sample{7}));
    auto change = changes.begin();
    for (std::size_t at = 0; at < frames;) {
        std::size_t count = std::min(lengths(), frames - at);
        for (; change != changes.end() && change->frame <= at; ++change) {
            stream.SetSettings(change->settings);
        }
        if (change != changes.end()) {
            count = std::min(count, change->frame - at);
        }
        std::vector<const void*> from;
        for (const std::vector<Sample>& buffer : in) {
            from.push_back(buffer.data() + at * width);
        }
        std::vector<void*> to;
        for (std::vector<Sample>& buffer : out) {
            to.push_back(buffer.data() + at * width);
        }
        EXPECT_EQ(stream.Process(from.data(), to.data(), static_cast<int>(count)), RESULT_OK);
        at += count;
    }
    return out;
}

/// Plays a signal and drains the stream. @return the output without the latency
template <typename Sample>
Buffers<Sample> PlayAligned(Stream& stream, const StreamFormat& format, const Buffers<Sample>& in,
                            const BlockLengths& lengths = Blocks(480),
                            const std::vector<Change>& changes = {}) {
    Buffers<Sample> out = Play(stream, format, in, lengths, changes);
    const std::size_t latency = static_cast<std::size_t>(stream.Latency()) * Width(format);
    Buffers<Sample> rest(out.size(), std::vector<Sample>(latency));
    const auto most = static_cast<std::size_t>(format.maxFrames) * Width(format);
    for (std::size_t at = 0; at < latency; at += most) {
        const auto count = static_cast<int>(std::min(most, latency - at) / Width(format));
        std::vector<void*> to;
        for (std::vector<Sample>& buffer : rest) {
            to.push_back(buffer.data() + at);
        }
        EXPECT_EQ(stream.Drain(to.data(), count), count);
    }
    for (std::size_t i = 0; i < out.size(); ++i) {
        out[i].insert(out[i].end(), rest[i].begin(), rest[i].end());
        out[i].erase(out[i].begin(), out[i].begin() + static_cast<std::ptrdiff_t>(latency));
    }
    return out;
}

/// The same through a new stream.
template <typename Sample>
Buffers<Sample> PlayAligned(const StreamFormat& format, const StreamSettings& settings,
                            const Buffers<Sample>& in, const BlockLengths& lengths = Blocks(480),
                            const std::vector<Change>& changes = {}) {
    Stream stream;
    EXPECT_EQ(stream.Init(format, settings), RESULT_OK);
    return PlayAligned(stream, format, in, lengths, changes);
}

/// Channels as one interleaved buffer.
template <typename Sample>
std::vector<Sample> Interleave(const Buffers<Sample>& channels) {
    std::vector<Sample> frames;
    for (std::size_t i = 0; i < channels[0].size(); ++i) {
        for (const std::vector<Sample>& channel : channels) {
            frames.push_back(channel[i]);
        }
    }
    return frames;
}

template <typename Sample>
std::vector<Sample> ChannelOf(const std::vector<Sample>& frames, std::size_t channel,
                              std::size_t channels) {
    std::vector<Sample> samples;
    for (std::size_t i = channel; i < frames.size(); i += channels) {
        samples.push_back(frames[i]);
    }
    return samples;
}

}  // namespace audio_filter
