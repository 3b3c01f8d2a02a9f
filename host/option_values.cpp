#include "host/option_values.h"

#include <algorithm>
#include <array>

#include "host/parse_number.h"

std::optional<InputFile> ParseSource(const std::string& text) {
    const std::size_t equals = text.find('=');
    const std::string type = text.substr(0, equals);
    if (equals == std::string::npos || equals + 1 == text.size()) {
        return std::nullopt;
    }
    const InputFile input = {text.substr(equals + 1), AV_SOURCE_MICROPHONE};
    if (type == "microphone") {
        return input;
    }
    if (type.size() != 1 || type[0] < '0' || type[0] > '3') {
        return std::nullopt;
    }
    return InputFile{input.path, static_cast<AVSourceType>(type[0] - '0')};
}

std::optional<ProcessLogLevel> ParseLogLevel(const std::string& text) {
    constexpr std::array<const char*, 4> kNames = {"debug", "info", "warn", "error"};
    const auto* const name = std::find(kNames.begin(), kNames.end(), text);
    if (name == kNames.end()) {
        return std::nullopt;
    }
    return static_cast<ProcessLogLevel>(PROCESS_LOG_DEBUG + (name - kNames.begin()));
}

std::optional<std::optional<double>> ParseLoudness(const std::string& text) {
    if (text == "off") {
        return std::optional<double>();
    }
    const std::optional<double> loudness = ParseNumber<double>(text);
    if (!loudness || !(*loudness >= -70.0 && *loudness <= -5.0)) {
        return std::nullopt;
    }
    return loudness;
}
