#include "host/microphone/filter_chain.h"

#include <nlohmann/json.hpp>
#include <sstream>

#include "clean_microphone.h"

namespace {

constexpr int kSuppressionOff = -1;

std::string Control(const FilterSettings& settings) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "control = { \"suppression\" = " << settings.denoiseLevel.value_or(kSuppressionOff)
         << ", \"gain_on\" = " << settings.gain.has_value()
         << ", \"gain\" = " << settings.gain.value_or(0.5F)
         << ", \"music_detection\" = " << settings.keepMusic << " }";
    return text.str();
}

/// A string of PipeWire's configuration, which is JSON's.
std::string Quoted(const std::string& text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

std::string FilterChain(const FilterSettings& settings, const std::string& source) {
    std::string text(kCleanMicrophone);
    const std::size_t control = text.find("control = {");
    text.replace(control, text.find('}', control) + 1 - control, Control(settings));
    if (!source.empty()) {
        const std::string passive = "node.passive = true";
        text.insert(text.find(passive) + passive.size(),
                    "\n                target.object = " + Quoted(source));
    }
    return text;
}
