#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

/// The filter's settings.
struct FilterSettings {
    std::optional<int> denoiseLevel = 3;  ///< 0 mild .. 3 most aggressive; none for off
    std::optional<float> gain;            ///< 0..1; none for off
    bool phaseCheck = true;               ///< stereo only
    bool mix = true;                      ///< several sources; false: the first alone
};

/// Applies the value of an option: denoise, gain, phase-check or mix.
/// @return false for another name or a value out of range: nothing changes then
bool ApplySetting(FilterSettings& settings, const std::string& name, const std::string& value);

/// A change of settings at a point in the stream.
struct SettingsChange {
    double seconds;
    std::vector<std::pair<std::string, std::string>> values;  ///< names and valid values
};

/// Reads "3.5s:denoise=off,gain=0.4". @return none for anything else
std::optional<SettingsChange> ParseChange(const std::string& text);
