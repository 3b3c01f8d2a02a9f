#include "plugins/obs/filter_properties.h"

#include <array>
#include <cstdio>
#include <string>

#include "plugins/obs/filter_settings.h"

namespace audio_filter::obs {

namespace {

constexpr const char* kReport = "report";
constexpr int kHighestRateWithoutHighBand = 48000;
constexpr double kGainStep = 0.01;

std::string OneDecimal(double value) {
    std::array<char, 32> text = {};
    std::snprintf(text.data(), text.size(), "%.1f", value);
    return text.data();
}

std::string Labelled(const char* key, const std::string& value) {
    return std::string(obs_module_text(key)) + ": " + value;
}

const char* MusicText(const ObsFilter& filter) {
    if (!filter.DetectsMusic()) {
        return obs_module_text("Music.DetectionOff");
    }
    return obs_module_text(filter.IsMusic() ? "Music.Yes" : "Music.No");
}

std::string ReportOf(const ObsFilter& filter) {
    if (!filter.IsRunning()) {
        return obs_module_text("Unsupported");
    }
    return Labelled("Latency", OneDecimal(filter.LatencyMs()) + " ms (" +
                                   std::to_string(filter.SampleRate()) + " Hz)") +
           '\n' + Labelled("Music", MusicText(filter)) + '\n' +
           Labelled("Reduction", OneDecimal(filter.Reduction()) + " dB");
}

void ShowReport(obs_property_t* report, const ObsFilter& filter) {
    obs_property_set_description(report, ReportOf(filter).c_str());
}

/// Returns whether the dialog has to be drawn again.
bool OnRefresh(obs_properties_t* properties, obs_property_t* /*button*/, void* filter) {
    ShowReport(obs_properties_get(properties, kReport), *static_cast<const ObsFilter*>(filter));
    return true;
}

void AddSuppression(obs_properties_t* properties) {
    obs_property_t* list =
        obs_properties_add_list(properties, kSuppression, obs_module_text("Suppression"),
                                OBS_COMBO_TYPE_LIST, OBS_COMBO_FORMAT_INT);
    obs_property_set_long_description(list, obs_module_text("Suppression.Description"));
    obs_property_list_add_int(list, obs_module_text("Suppression.Off"), kSuppressionOff);
    for (int level = 0; level <= kSuppressionRange.highest; ++level) {
        const std::string key = "Suppression.Level" + std::to_string(level);
        obs_property_list_add_int(list, obs_module_text(key.c_str()), level);
    }
}

void AddGain(obs_properties_t* properties) {
    obs_properties_t* group = obs_properties_create();
    obs_property_t* gain = obs_properties_add_float_slider(
        group, kGain, obs_module_text("Gain"), kGainRange.lowest, kGainRange.highest, kGainStep);
    obs_property_set_long_description(gain, obs_module_text("Gain.Description"));
    obs_properties_add_group(properties, kGainOn, obs_module_text("GainOn"), OBS_GROUP_CHECKABLE,
                             group);
}

/// @param description the key of the tooltip
void AddSwitch(obs_properties_t* properties, const char* name, const char* text,
               const char* description, bool enabled = true) {
    obs_property_t* property = obs_properties_add_bool(properties, name, obs_module_text(text));
    obs_property_set_long_description(property, obs_module_text(description));
    obs_property_set_enabled(property, enabled);
}

void AddReport(obs_properties_t* properties, ObsFilter& filter) {
    obs_property_t* report = obs_properties_add_text(properties, kReport, "", OBS_TEXT_INFO);
    obs_property_text_set_info_type(
        report, filter.IsRunning() ? OBS_TEXT_INFO_NORMAL : OBS_TEXT_INFO_ERROR);
    ShowReport(report, filter);
    obs_properties_add_button2(properties, "refresh", obs_module_text("Refresh"), OnRefresh,
                               &filter);
}

}  // namespace

obs_properties_t* MakeProperties(ObsFilter* filter) {
    obs_properties_t* properties = obs_properties_create();
    AddSuppression(properties);
    AddSwitch(properties, kMusicDetection, "MusicDetection", "MusicDetection.Description");
    AddGain(properties);
    AddSwitch(properties, kPhaseCheck, "PhaseCheck", "PhaseCheck.Description",
              filter == nullptr || filter->Channels() == 2);
    AddSwitch(properties, kHighBand, "HighBand", "HighBand.Description",
              filter == nullptr || filter->SampleRate() > kHighestRateWithoutHighBand);
    if (filter != nullptr) {
        AddReport(properties, *filter);
    }
    return properties;
}

}  // namespace audio_filter::obs
