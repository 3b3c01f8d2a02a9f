#pragma once

#include <array>
#include <cstddef>
#include <limits>

#include "plugins/settings/plugin_settings.h"

/// The control ports, which LV2 and LADSPA share. Ports are numbered: the audio inputs, the audio outputs, then these.
namespace audio_filter {

/// Indices into kControlPorts.
enum ControlPortIndex : std::size_t {
    kEnabledPort,
    kSuppressionPort,
    kGainOnPort,
    kGainPort,
    kPhaseCheckPort,
    kMusicDetectionPort,
    kHighBandPort,
    kLatencyPort,  ///< the first output
    kMusicPort,
    kReductionPort,
    kOutOfRangePort,
    kControlPortCount
};

struct ControlPort {
    enum class Type { kSwitch, kInteger, kNumber };

    const char* symbol;
    const char* name;
    const char* comment;
    Type type;
    PluginRange<float> range;
    const char* unit = "";         ///< of the LV2 units vocabulary
    const char* designation = "";  ///< of the LV2 core vocabulary
};

constexpr PluginRange<float> kSwitchedOff = {0.0F, 1.0F, 0.0F};
constexpr PluginRange<float> kSwitchedOn = {0.0F, 1.0F, 1.0F};

inline constexpr std::array<ControlPort, kControlPortCount> kControlPorts = {{
    {"enabled", "Enabled", "Off: the input passes unchanged, with the same latency.",
     ControlPort::Type::kSwitch, kSwitchedOn, "", "enabled"},
    {"suppression",
     "Suppression",
     "Noise suppression: -1 off, 0 mild to 3 most aggressive.",
     ControlPort::Type::kInteger,
     {static_cast<float>(kSuppressionRange.lowest), static_cast<float>(kSuppressionRange.highest),
      static_cast<float>(kSuppressionRange.initial)}},
    {"gain_on", "Gain on", "Switches on the gain curve.", ControlPort::Type::kSwitch, kSwitchedOff},
    {"gain", "Gain", "Strength of the gain curve.", ControlPort::Type::kNumber, kGainRange},
    {"phase_check", "Phase check",
     "Inverts the left channel once it is found to be reversed. Stereo only.",
     ControlPort::Type::kSwitch, kSwitchedOff},
    {"music_detection", "Music detection", "Suppresses noise at level 0 while music is detected.",
     ControlPort::Type::kSwitch, kSwitchedOff},
    {"high_band", "High band",
     "Above 48000 Hz: keeps the band above the one in which noise is suppressed.",
     ControlPort::Type::kSwitch, kSwitchedOn},
    {"latency",
     "Latency",
     "Delay of the output; it depends on the rate alone.",
     ControlPort::Type::kInteger,
     {0.0F, 192000.0F, 0.0F},
     "frame",
     "latency"},
    {"music", "Music", "1 while music is detected.", ControlPort::Type::kSwitch, kSwitchedOff},
    {"reduction",
     "Reduction",
     "Attenuation by noise suppression, now.",
     ControlPort::Type::kNumber,
     {0.0F, 100.0F, 0.0F},
     "db"},
    {"out_of_range",
     "Settings out of range",
     "How many settings are out of their range; the nearest end applies.",
     ControlPort::Type::kInteger,
     {0.0F, static_cast<float>(kLatencyPort), 0.0F}},
}};

constexpr bool IsOutput(std::size_t control) {
    return control >= kLatencyPort;
}

}  // namespace audio_filter
