#pragma once

#include <optional>
#include <string>

#include "host/filter_settings.h"

/// Reads seconds, "m:s" or "h:m:s", with a fraction and an "s" behind if wanted: "90", "1:30.0" and
/// "0:01:30s" are equal. @return s; none for anything else
std::optional<double> ParseTime(const std::string& text);

/// Reads the value of --at: a time, ":" and settings, such as "1:02:03:denoise=off,gain=0.4".
/// @return none for anything else
std::optional<SettingsChange> ParseAt(const std::string& text);

/// Why ParseAt refuses the text, in one line; empty if it does not.
std::string ExplainAt(const std::string& text);
