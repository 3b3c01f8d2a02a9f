#include "plugins/obs/filter_settings.h"

#include <algorithm>

namespace audio_filter::obs {

namespace {

/// Keeps values out of range out of range, within what the narrower type can hold.
template <typename Value, typename Wide>
Value Narrowed(Wide value, const PluginRange<Value>& range) {
    return static_cast<Value>(std::clamp(value, static_cast<Wide>(range.lowest) - 1,
                                         static_cast<Wide>(range.highest) + 1));
}

}  // namespace

void SetDefaults(obs_data_t* data) {
    const PluginSettings defaults;
    obs_data_set_default_int(data, kSuppression, defaults.suppression);
    obs_data_set_default_bool(data, kGainOn, defaults.gainOn);
    obs_data_set_default_double(data, kGain, defaults.gain);
    obs_data_set_default_bool(data, kPhaseCheck, defaults.phaseCheck);
    obs_data_set_default_bool(data, kMusicDetection, defaults.musicDetection);
    obs_data_set_default_bool(data, kHighBand, defaults.highBand);
}

PluginSettings ReadSettings(obs_data_t* data,
                            const std::function<void(const Correction&)>& report) {
    const long long suppression = obs_data_get_int(data, kSuppression);
    const double gain = obs_data_get_double(data, kGain);
    const PluginSettings given = {
        .suppression = Narrowed(suppression, kSuppressionRange),
        .gainOn = obs_data_get_bool(data, kGainOn),
        .gain = Narrowed(gain, kGainRange),
        .phaseCheck = obs_data_get_bool(data, kPhaseCheck),
        .musicDetection = obs_data_get_bool(data, kMusicDetection),
        .highBand = obs_data_get_bool(data, kHighBand),
    };
    const PluginSettings used = Clamped(given);
    if (used.suppression != given.suppression) {
        obs_data_set_int(data, kSuppression, used.suppression);
        report({kSuppression, static_cast<double>(suppression),
                static_cast<double>(kSuppressionRange.lowest),
                static_cast<double>(kSuppressionRange.highest),
                static_cast<double>(used.suppression)});
    }
    if (used.gain != given.gain) {
        obs_data_set_double(data, kGain, used.gain);
        report({kGain, gain, kGainRange.lowest, kGainRange.highest, used.gain});
    }
    return used;
}

}  // namespace audio_filter::obs
