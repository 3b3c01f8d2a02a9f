#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <type_traits>

#include "common/media_process.h"
#include "common/sample_format.h"
#include "stream/stream_types.h"
#include "stream/to_s16.h"

namespace audio_filter::internal {

/// Copies frames between the host's buffers and the stream's channels of floats, full scale at 1.
class SampleLayout {
public:
    explicit SampleLayout(const StreamFormat& format)
        : mS16(IsS16(format.samples)),
          mPlanar(IsPlanar(format.samples)),
          mChannels(static_cast<std::size_t>(format.channels)) {}

    /// The host's buffers per source.
    std::size_t Buffers() const { return mPlanar ? mChannels : 1; }

    /// @param buffers of the source
    /// @param at the first frame in the buffers
    void Read(const void* const* buffers, std::size_t at, std::size_t channel,
              std::span<float> samples) const {
        mS16 ? ReadAs<short>(buffers, at, channel, samples)
             : ReadAs<float>(buffers, at, channel, samples);
    }

    void Write(std::span<const float> samples, std::size_t channel, void* const* buffers,
               std::size_t at) const {
        mS16 ? WriteAs<short>(samples, channel, buffers, at)
             : WriteAs<float>(samples, channel, buffers, at);
    }

private:
    template <typename Sample>
    void ReadAs(const void* const* buffers, std::size_t at, std::size_t channel,
                std::span<float> samples) const {
        const auto* from = static_cast<const Sample*>(buffers[mPlanar ? channel : 0]);
        if (mPlanar || mChannels == 1) {
            std::transform(from + at, from + at + samples.size(), samples.begin(),
                           FromSample<Sample>);
            return;
        }
        from += at * mChannels + channel;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i] = FromSample(from[i * mChannels]);
        }
    }

    template <typename Sample>
    void WriteAs(std::span<const float> samples, std::size_t channel, void* const* buffers,
                 std::size_t at) const {
        auto* to = static_cast<Sample*>(buffers[mPlanar ? channel : 0]);
        if (mPlanar || mChannels == 1) {
            std::transform(samples.begin(), samples.end(), to + at, ToSample<Sample>);
            return;
        }
        to += at * mChannels + channel;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            to[i * mChannels] = ToSample<Sample>(samples[i]);
        }
    }

    template <typename Sample>
    static float FromSample(Sample sample) {
        return std::is_same_v<Sample, short> ? static_cast<float>(sample) / 32768.0F
                                             : static_cast<float>(sample);
    }

    template <typename Sample>
    static Sample ToSample(float sample) {
        if constexpr (std::is_same_v<Sample, short>) {
            return NearestS16(sample);
        } else {
            return sample;
        }
    }

    bool mS16;
    bool mPlanar;
    std::size_t mChannels;
};

}  // namespace audio_filter::internal
