#include "host/media/media_samples.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace {

template <typename Sample>
float Decoded(Sample sample) {
    if constexpr (std::is_floating_point_v<Sample>) {
        return static_cast<float>(sample);
    } else if constexpr (std::is_unsigned_v<Sample>) {
        return (static_cast<float>(sample) - 128.0F) / 128.0F;
    } else {
        const double full = -static_cast<double>(std::numeric_limits<Sample>::min());
        return static_cast<float>(static_cast<double>(sample) / full);
    }
}

template <typename Sample>
Sample Encoded(float sample) {
    if constexpr (std::is_floating_point_v<Sample>) {
        return static_cast<Sample>(sample);
    } else {
        constexpr bool kUnsigned = std::is_unsigned_v<Sample>;
        constexpr double kFull =
            kUnsigned ? 128.0 : -static_cast<double>(std::numeric_limits<Sample>::min());
        const double scaled = std::isnan(sample) ? 0.0 : static_cast<double>(sample) * kFull;
        const double clamped = std::clamp(scaled, -kFull, kFull - 1.0);
        return static_cast<Sample>(std::llround(clamped) + (kUnsigned ? 128 : 0));
    }
}

/// The samples of a channel in a frame, and the distance between two.
template <typename Sample>
Sample* ChannelOf(const AVFrame& frame, int channel, std::size_t& step) {
    const bool planar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(frame.format)) != 0;
    step = planar ? 1 : static_cast<std::size_t>(frame.ch_layout.nb_channels);
    auto* data = reinterpret_cast<Sample*>(frame.extended_data[planar ? channel : 0]);
    return data + (planar ? 0 : channel);
}

template <typename Sample>
bool Append(const AVFrame& frame, std::vector<float>& samples) {
    const auto channels = static_cast<std::size_t>(frame.ch_layout.nb_channels);
    const auto count = static_cast<std::size_t>(frame.nb_samples);
    const std::size_t start = samples.size();
    samples.resize(start + count * channels);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        std::size_t step = 0;
        const Sample* in = ChannelOf<Sample>(frame, static_cast<int>(channel), step);
        for (std::size_t i = 0; i < count; ++i) {
            samples[start + i * channels + channel] = Decoded(in[i * step]);
        }
    }
    return true;
}

template <typename Sample>
bool Fill(AVFrame& frame, const float* samples) {
    const auto channels = static_cast<std::size_t>(frame.ch_layout.nb_channels);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        std::size_t step = 0;
        auto* out = ChannelOf<Sample>(frame, static_cast<int>(channel), step);
        for (std::size_t i = 0; i < static_cast<std::size_t>(frame.nb_samples); ++i) {
            out[i * step] = Encoded<Sample>(samples[i * channels + channel]);
        }
    }
    return true;
}

}  // namespace

bool AppendSamples(const AVFrame& frame, std::vector<float>& samples) {
    switch (av_get_packed_sample_fmt(static_cast<AVSampleFormat>(frame.format))) {
        case AV_SAMPLE_FMT_U8: return Append<std::uint8_t>(frame, samples);
        case AV_SAMPLE_FMT_S16: return Append<std::int16_t>(frame, samples);
        case AV_SAMPLE_FMT_S32: return Append<std::int32_t>(frame, samples);
        case AV_SAMPLE_FMT_S64: return Append<std::int64_t>(frame, samples);
        case AV_SAMPLE_FMT_FLT: return Append<float>(frame, samples);
        case AV_SAMPLE_FMT_DBL: return Append<double>(frame, samples);
        default: return false;
    }
}

bool FillFrame(AVFrame& frame, const float* samples) {
    switch (av_get_packed_sample_fmt(static_cast<AVSampleFormat>(frame.format))) {
        case AV_SAMPLE_FMT_U8: return Fill<std::uint8_t>(frame, samples);
        case AV_SAMPLE_FMT_S16: return Fill<std::int16_t>(frame, samples);
        case AV_SAMPLE_FMT_S32: return Fill<std::int32_t>(frame, samples);
        case AV_SAMPLE_FMT_FLT: return Fill<float>(frame, samples);
        case AV_SAMPLE_FMT_DBL: return Fill<double>(frame, samples);
        default: return false;
    }
}
