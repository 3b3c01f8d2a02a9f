#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What the filter is asked to do.
struct FilterSettings {
    std::optional<int> denoiseLevel = 3;  ///< 0 mild .. 3 most aggressive; none: off
    std::optional<float> gain;            ///< 0..1; none: off
    bool phaseCheck = true;               ///< of stereo sources
    bool mix = true;                      ///< of several sources; else the first one alone
};

/// Sets what an option of that name sets: denoise, gain, phase-check or mix.
/// @return false for another name, or a value out of its range: nothing is then set
bool ApplySetting(FilterSettings& settings, const std::string& name, const std::string& value);

/// Settings that change at a point of the stream.
struct SettingsChange {
    double seconds;
    std::vector<std::pair<std::string, std::string>> values;  ///< names and values, all good
};

/// Reads "3.5s:denoise=off,gain=0.4". @return none for anything else
std::optional<SettingsChange> ParseChange(const std::string& text);
