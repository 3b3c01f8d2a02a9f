#pragma once

#include <obs-data.h>

#include <functional>

#include "plugins/settings/plugin_settings.h"

/// The plug-in's settings as OBS stores them.
namespace audio_filter::obs {

inline constexpr const char* kSuppression = "suppression";
inline constexpr const char* kGainOn = "gain_on";
inline constexpr const char* kGain = "gain";
inline constexpr const char* kPhaseCheck = "phase_check";
inline constexpr const char* kMusicDetection = "music_detection";
inline constexpr const char* kHighBand = "high_band";

void SetDefaults(obs_data_t* data);

/// A setting that was out of range.
struct Correction {
    const char* name;
    double given;
    double lowest;
    double highest;
    double used;
};

/// Reads the settings, and writes those out of range back clamped, so that the dialog shows what is in effect.
PluginSettings ReadSettings(obs_data_t* data, const std::function<void(const Correction&)>& report);

}  // namespace audio_filter::obs
