#include "plugins/settings/plugin_settings.h"

#include <algorithm>
#include <cmath>

namespace audio_filter {

PluginSettings Clamped(const PluginSettings& settings) {
    PluginSettings clamped = settings;
    clamped.suppression =
        std::clamp(settings.suppression, kSuppressionRange.lowest, kSuppressionRange.highest);
    clamped.gain = std::isnan(settings.gain)
                       ? 0.0F
                       : std::clamp(settings.gain, kGainRange.lowest, kGainRange.highest);
    return clamped;
}

StreamSettings ToStreamSettings(const PluginSettings& settings, bool bypass) {
    const PluginSettings wanted = Clamped(settings);
    StreamSettings stream;
    stream.suppression.reset();
    if (bypass) {
        return stream;
    }
    if (wanted.suppression != kSuppressionOff) {
        stream.suppression = wanted.suppression;
    }
    if (wanted.gainOn) {
        stream.gain = wanted.gain;
    }
    stream.phaseCheck = wanted.phaseCheck;
    stream.music = wanted.musicDetection ? MusicMode::kKeep : MusicMode::kIgnore;
    stream.highBand = wanted.highBand;
    return stream;
}

}  // namespace audio_filter
