#include "host/page/markup.h"

#include <cmath>
#include <cstdio>

namespace {

std::string Printed(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof(text), format, value);
    return text;
}

}  // namespace

std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&': escaped += "&amp;"; break;
            case '<': escaped += "&lt;"; break;
            case '>': escaped += "&gt;"; break;
            case '"': escaped += "&quot;"; break;
            case '\'': escaped += "&#39;"; break;
            default: escaped += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
        }
    }
    return escaped;
}

std::string Attribute(std::string_view name, std::string_view value) {
    std::string attribute(1, ' ');
    attribute.append(name).append("=\"").append(Escaped(value));
    return attribute + '"';
}

std::string Attribute(std::string_view name, double value) {
    return Attribute(name, Printed("%g", value));
}

std::string Percent(double share) {
    return Printed("%.5g%%", share * 100.0);
}

std::string LevelText(double level) {
    return std::isinf(level) ? "silence" : Printed("%.1f", level);
}

std::string FilledIn(std::string_view text, const std::map<std::string, std::string>& values) {
    std::string filled;
    std::size_t at = 0;
    for (std::size_t open = 0; (open = text.find("{{", at)) != std::string_view::npos;) {
        const std::size_t close = text.find("}}", open);
        filled += text.substr(at, open - at);
        filled += values.at(std::string(text.substr(open + 2, close - open - 2)));
        at = close + 2;
    }
    return filled.append(text.substr(at));
}
