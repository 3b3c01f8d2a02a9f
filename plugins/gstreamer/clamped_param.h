#pragma once

#include <glib-object.h>

#include "plugins/settings/plugin_settings.h"

/// Properties with a range that hand values out of range to the object. GObject's own refuse such values
/// and keep the previous one.
namespace audio_filter {

GParamSpec* ClampedInt(const char* name, const char* nick, const char* text,
                       const PluginRange<int>& range, GParamFlags flags);

GParamSpec* ClampedFloat(const char* name, const char* nick, const char* text,
                         const PluginRange<float>& range, GParamFlags flags);

}  // namespace audio_filter
