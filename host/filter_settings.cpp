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

std::optional<SettingValues> ParseSettings(const std::string& text) {
    SettingValues values;
    FilterSettings scratch;
    if (text.ends_with(',')) {
        return std::nullopt;
    }
    std::istringstream items(text);
    for (std::string item; std::getline(items, item, ',');) {
        const std::size_t equals = item.find('=');
        const std::string name = item.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : item.substr(equals + 1);
        if (!ApplySetting(scratch, name, value)) {
            return std::nullopt;
        }
        values.emplace_back(name, value);
    }
    return values.empty() ? std::nullopt : std::optional(values);
}
