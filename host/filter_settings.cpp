#include "host/filter_settings.h"

#include <sstream>

#include "host/parse_number.h"

namespace {

/// Accepts "off" or a number from 0 to `highest`.
template <typename Number>
bool SetNumber(std::optional<Number>& setting, const std::string& value, Number highest) {
    if (value == "off") {
        setting.reset();
        return true;
    }
    const std::optional<Number> number = ParseNumber<Number>(value);
    if (!number || !(*number >= Number(0) && *number <= highest)) {
        return false;
    }
    setting = number;
    return true;
}

template <typename Value>
struct Choice {
    const char* name;
    Value value;
};

constexpr Choice<bool> kSwitch[] = {{"on", true}, {"off", false}};
constexpr Choice<bool> kMusic[] = {{"keep", true}, {"ignore", false}};
constexpr Choice<PhaseMode> kPhaseModes[] = {{"file", PhaseMode::kFile},
                                             {"live", PhaseMode::kLive},
                                             {"on", PhaseMode::kFile},
                                             {"off", PhaseMode::kOff}};

template <typename Value, std::size_t Count>
bool Choose(Value& setting, const std::string& name, const Choice<Value> (&choices)[Count]) {
    for (const Choice<Value>& choice : choices) {
        if (name == choice.name) {
            setting = choice.value;
            return true;
        }
    }
    return false;
}

}  // namespace

bool ApplySetting(FilterSettings& settings, const std::string& name, const std::string& value) {
    if (name == "denoise") {
        return SetNumber(settings.denoiseLevel, value, 3);
    }
    if (name == "gain") {
        return SetNumber(settings.gain, value, 1.0F);
    }
    if (name == "phase-check") {
        return Choose(settings.phaseCheck, value, kPhaseModes);
    }
    if (name == "music") {
        return Choose(settings.keepMusic, value, kMusic);
    }
    return name == "mix" && Choose(settings.mix, value, kSwitch);
}

std::optional<SettingsChange> ParseChange(const std::string& text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) {
        return std::nullopt;
    }
    std::string time = text.substr(0, colon);
    if (!time.empty() && time.back() == 's') {
        time.pop_back();
    }
    const std::optional<double> seconds = ParseNumber<double>(time);
    if (!seconds || !(*seconds >= 0.0 && *seconds < 1e9)) {
        return std::nullopt;
    }
    SettingsChange change = {*seconds, {}};
    FilterSettings scratch;
    if (text.back() == ',') {
        return std::nullopt;
    }
    std::istringstream items(text.substr(colon + 1));
    for (std::string item; std::getline(items, item, ',');) {
        const std::size_t equals = item.find('=');
        const std::string name = item.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : item.substr(equals + 1);
        if (!ApplySetting(scratch, name, value)) {
            return std::nullopt;
        }
        change.values.emplace_back(name, value);
    }
    return change.values.empty() ? std::nullopt : std::optional(change);
}
