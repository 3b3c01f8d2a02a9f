#include "host/page/base64.h"

#include <cstddef>
#include <cstdint>

std::string Base64(std::string_view bytes) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::string_view group = bytes.substr(at, 3);
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            bits = bits << 8U | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
        }
        for (std::size_t digit = 0; digit < 4; ++digit) {
            text += digit > group.size() ? '=' : kDigits[bits >> (18U - 6U * digit) & 63U];
        }
    }
    return text;
}
