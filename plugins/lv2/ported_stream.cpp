#include "plugins/lv2/ported_stream.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "common/result_code.h"

namespace audio_filter {

namespace {

constexpr std::uint32_t kMaxFrames = 192000;

/// Hosts may write fractions to integer ports.
int SuppressionOf(float value) {
    const auto lowest = static_cast<float>(kSuppressionRange.lowest);
    const auto highest = static_cast<float>(kSuppressionRange.highest);
    return std::isnan(value) ? kSuppressionOff
                             : static_cast<int>(std::lround(std::clamp(value, lowest, highest)));
}

}  // namespace

int PortedStream::Init(int sampleRate, int channels) {
    mChannels = static_cast<std::size_t>(channels);
    mApplied.reset();
    return mStream.Init({.sampleRate = sampleRate,
                         .channels = channels,
                         .samples = SAMPLE_FMT_FLTP,
                         .maxFrames = kMaxFrames,
                         .finite = true},
                        ToStreamSettings({}));
}

void PortedStream::Connect(std::size_t port, float* data) {
    if (port < 2 * mChannels) {
        mAudio[port] = data;
    } else if (port - 2 * mChannels < kControlPortCount) {
        mControls[port - 2 * mChannels] = data;
    }
}

void PortedStream::Reset() {
    mStream.Reset();
}

void PortedStream::Run(std::uint32_t frames) {
    const StreamSettings settings = ToStreamSettings(Settings(), !Switch(kEnabledPort));
    if (settings != mApplied) {
        mStream.SetSettings(settings);
        mApplied = settings;
    }
    std::array<const void*, kMaxChannels> in = {};
    std::array<void*, kMaxChannels> out = {};
    for (std::uint32_t done = 0; HasAudio() && done < frames;) {
        const std::uint32_t count = std::min(frames - done, kMaxFrames);
        for (std::size_t channel = 0; channel < mChannels; ++channel) {
            in[channel] = mAudio[channel] + done;
            out[channel] = mAudio[mChannels + channel] + done;
        }
        if (mStream.Process(in.data(), out.data(), static_cast<int>(count)) != RESULT_OK) {
            PassThrough(done, count);
        }
        done += count;
    }
    SetControl(kLatencyPort, static_cast<float>(mStream.Latency()));
    SetControl(kMusicPort, mStream.IsMusic() ? 1.0F : 0.0F);
    SetControl(kReductionPort, mStream.Reduction());
    SetControl(kOutOfRangePort, static_cast<float>(OutOfRange()));
}

/// Without memory for a stream: sound, not silence.
void PortedStream::PassThrough(std::uint32_t from, std::uint32_t count) {
    for (std::size_t channel = 0; channel < mChannels; ++channel) {
        std::memmove(mAudio[mChannels + channel] + from, mAudio[channel] + from,
                     count * sizeof(float));
    }
}

float PortedStream::Control(ControlPortIndex port) const {
    return mControls[port] != nullptr ? *mControls[port] : kControlPorts[port].range.initial;
}

PluginSettings PortedStream::Settings() const {
    return {.suppression = SuppressionOf(Control(kSuppressionPort)),
            .gainOn = Switch(kGainOnPort),
            .gain = Control(kGainPort),
            .phaseCheck = Switch(kPhaseCheckPort),
            .musicDetection = Switch(kMusicDetectionPort),
            .highBand = Switch(kHighBandPort)};
}

int PortedStream::OutOfRange() const {
    int count = 0;
    for (std::size_t control = 0; control < kLatencyPort; ++control) {
        const float value = Control(static_cast<ControlPortIndex>(control));
        const PluginRange<float>& range = kControlPorts[control].range;
        count += value >= range.lowest && value <= range.highest ? 0 : 1;
    }
    return count;
}

void PortedStream::SetControl(ControlPortIndex port, float value) {
    if (mControls[port] != nullptr) {
        *mControls[port] = value;
    }
}

bool PortedStream::HasAudio() const {
    return std::all_of(mAudio.begin(), mAudio.begin() + static_cast<std::ptrdiff_t>(2 * mChannels),
                       [](const float* port) { return port != nullptr; });
}

}  // namespace audio_filter
