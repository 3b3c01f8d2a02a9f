#pragma once

#include "stream/stream_types.h"

/// The settings that every plug-in shows. Each engine writes the names in its own manner, such as phase_check,
/// phase-check or "Phase check".
namespace audio_filter {

inline constexpr int kSuppressionOff = -1;

/// A setting with a number, as engines describe it.
template <typename Value>
struct PluginRange {
    Value lowest;
    Value highest;
    Value initial;
};

inline constexpr PluginRange<int> kSuppressionRange = {kSuppressionOff, 3, 2};
inline constexpr PluginRange<float> kGainRange = {0.0F, 1.0F, 0.5F};

struct PluginSettings {
    int suppression =
        kSuppressionRange.initial;  ///< kSuppressionOff, or the level, 0 mild .. 3 most aggressive
    bool gainOn = false;            ///< gain curve
    float gain = kGainRange.initial;  ///< 0..1
    bool phaseCheck = false;          ///< stereo only: detect a reversed channel and correct it
    bool musicDetection = false;      ///< level 0 while music is detected
    bool highBand = true;             ///< above 48000 Hz: keep the band above the suppressor's

    bool operator==(const PluginSettings&) const = default;
};

/// With suppression, gain and gain to the nearest end of their ranges; a gain of NaN becomes 0. Hosts are told when
/// this changes a setting.
PluginSettings Clamped(const PluginSettings& settings);

/// @param bypass every stage off: the stream then returns its input, delayed
StreamSettings ToStreamSettings(const PluginSettings& settings, bool bypass = false);

}  // namespace audio_filter
