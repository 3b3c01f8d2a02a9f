#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "plugins/lv2/control_ports.h"
#include "stream/stream.h"

namespace audio_filter {

/// A stream whose audio and settings pass through ports, which are pointers to floats. LV2 and LADSPA share it.
class PortedStream {
public:
    static constexpr std::size_t kMaxChannels = 2;

    /// [setup] Throws std::bad_alloc.
    /// @param channels 1..kMaxChannels
    /// @return RESULT_OK; RESULT_INVALID for a rate out of range
    int Init(int sampleRate, int channels);

    /// [audio] A control that is not connected has its initial value; no audio is processed while an audio port is not
    /// connected.
    void Connect(std::size_t port, float* data);

    /// [setup] Forgets all earlier input. Throws std::bad_alloc: Run then copies its input.
    void Reset();

    /// [audio] Any input may share its buffer with any output.
    /// @param frames any number; 0 updates the control outputs only
    void Run(std::uint32_t frames);

private:
    void PassThrough(std::uint32_t from, std::uint32_t count);
    float Control(ControlPortIndex port) const;
    bool Switch(ControlPortIndex port) const { return Control(port) > 0.0F; }
    PluginSettings Settings() const;
    int OutOfRange() const;
    void SetControl(ControlPortIndex port, float value);
    bool HasAudio() const;

    Stream mStream;
    std::size_t mChannels = 0;
    std::array<float*, 2 * kMaxChannels> mAudio = {};  ///< inputs, then outputs
    std::array<float*, kControlPortCount> mControls = {};
    std::optional<StreamSettings> mApplied;
};

}  // namespace audio_filter
