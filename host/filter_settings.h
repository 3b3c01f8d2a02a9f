#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// How a reversed channel of a stereo source is found.
enum class PhaseMode : std::uint8_t {
    kOff,
    kLive,  ///< as the stream runs: corrected from the verdict on
    kFile   ///< before the stream runs: corrected from the first reversed frame on; needs files
};

/// The filter's settings.
struct FilterSettings {
    std::optional<int> denoiseLevel = 2;  ///< 0 mild .. 3 most aggressive; none for off
    std::optional<float> gain;            ///< 0..1; none for off
    PhaseMode phaseCheck = PhaseMode::kFile;
    bool mix = true;         ///< several sources; false: the first alone
    bool keepMusic = false;  ///< while music is detected, suppress noise at level 0

    bool operator==(const FilterSettings&) const = default;
};

/// Applies the value of an option: denoise, gain, phase-check, mix or music.
/// @return false for another name or a value out of range: nothing changes then
bool ApplySetting(FilterSettings& settings, const std::string& name, const std::string& value);

/// Names of settings and valid values.
using SettingValues = std::vector<std::pair<std::string, std::string>>;

/// Reads "denoise=off,gain=0.4". @return none for anything else
std::optional<SettingValues> ParseSettings(const std::string& text);

/// A change of settings at a point in the stream.
struct SettingsChange {
    double seconds;
    SettingValues values;
};
