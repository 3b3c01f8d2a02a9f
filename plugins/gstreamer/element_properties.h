#pragma once

#include <glib-object.h>

#include "plugins/settings/plugin_settings.h"

/// The properties of the element that are settings. All are controllable and may change while playing.
namespace audio_filter {

/// Numbers of the properties; the reports are the element's own.
enum Property : guint {
    kSuppression = 1,
    kGainOn,
    kGain,
    kPhaseCheck,
    kMusicDetection,
    kHighBand,
    kLatency,
    kMusic,
    kReduction
};

void InstallProperties(GObjectClass* type);

/// Stores a value in the settings, as it is. @return false if the property is not a setting
bool SetProperty(PluginSettings& settings, guint property, const GValue* value);

/// @return false if the property is not a setting
bool GetProperty(const PluginSettings& settings, guint property, GValue* value);

}  // namespace audio_filter
