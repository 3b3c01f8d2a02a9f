#include "host/at_option.h"

#include <array>
#include <sstream>

#include "host/parse_number.h"

namespace {

constexpr const char* kForm =
    " (form: TIME:SETTING=VALUE,... such as 3.5:denoise=off,gain=0.4 or 1:02:03:denoise=1)";

/// Where the time ends: settings contain no colon.
std::size_t EndOfTime(const std::string& text) {
    return text.rfind(':', text.find('='));
}

std::string NotASetting(const std::string& item) {
    return "'" + item +
           "' is not denoise=0..3|off, gain=0..1|off, phase-check=file|live|off, mix=on|off or "
           "music=keep|ignore";
}

}  // namespace

std::optional<double> ParseTime(const std::string& text) {
    std::istringstream parts(text.substr(0, text.size() - (text.ends_with("s") ? 1U : 0U)));
    double seconds = 0.0;
    int count = 0;
    for (std::string part; std::getline(parts, part, ':'); ++count) {
        // Only the last part may have a fraction, and only the first exceed 59.
        const bool last = parts.eof();
        const std::optional<double> number = ParseNumber<double>(part);
        const bool whole = part.find_first_not_of("0123456789") == std::string::npos;
        if (!number || !(*number >= 0.0) || (!last && !whole) || (count > 0 && *number >= 60.0)) {
            return std::nullopt;
        }
        seconds = 60.0 * seconds + *number;
    }
    const bool complete = count >= 1 && count <= 3 && !text.ends_with(":");
    return complete && seconds < 1e9 ? std::optional(seconds) : std::nullopt;
}

std::optional<SettingsChange> ParseAt(const std::string& text) {
    const std::size_t end = EndOfTime(text);
    if (end == std::string::npos) {
        return std::nullopt;
    }
    const std::optional<double> seconds = ParseTime(text.substr(0, end));
    const std::optional<SettingValues> values = ParseSettings(text.substr(end + 1));
    return seconds && values ? std::optional(SettingsChange{*seconds, *values}) : std::nullopt;
}

std::string ExplainAt(const std::string& text) {
    const std::string quoted = "'" + text + "': ";
    const std::size_t end = EndOfTime(text);
    if (ParseAt(text)) {
        return "";
    }
    if (end == std::string::npos || text.find('=') == std::string::npos) {
        return quoted + "a time or a setting is missing" + kForm;
    }
    const std::string time = text.substr(0, end);
    if (!ParseTime(time)) {
        return quoted + "'" + time + "' is not a time in seconds, m:s or h:m:s" + kForm;
    }
    std::istringstream items(text.substr(end + 1));
    for (std::string item; std::getline(items, item, ',');) {
        if (!ParseSettings(item)) {
            return quoted + NotASetting(item);
        }
    }
    return quoted + "ends with a comma" + kForm;
}
