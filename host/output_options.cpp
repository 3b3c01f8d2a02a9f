#include "host/output_options.h"

#include <cctype>

#include "host/media/media_output.h"
#include "host/parse_number.h"

std::optional<int> ParseTrack(const std::string& text) {
    constexpr int kMostTracks = 256;
    if (text == "all") {
        return kAllTracks;
    }
    const std::optional<int> track = ParseNumber<int>(text);
    return track && *track >= 1 && *track <= kMostTracks ? track : std::nullopt;
}

std::optional<int> ParseBitRate(const std::string& text) {
    constexpr double kLowest = 500.0;
    constexpr double kHighest = 10e6;
    const bool isKilo =
        !text.empty() && std::tolower(static_cast<unsigned char>(text.back())) == 'k';
    const std::optional<double> number =
        ParseNumber<double>(isKilo ? text.substr(0, text.size() - 1) : text);
    const double rate = number.value_or(0.0) * (isKilo ? 1000.0 : 1.0);
    return rate >= kLowest && rate <= kHighest ? std::optional(static_cast<int>(rate))
                                               : std::nullopt;
}

std::optional<OutputBits> ParseBits(const std::string& text) {
    return text == "16"      ? std::optional(OutputBits::k16)
           : text == "24"    ? std::optional(OutputBits::k24)
           : text == "float" ? std::optional(OutputBits::kFloat)
                             : std::nullopt;
}
