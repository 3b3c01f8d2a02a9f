#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <system_error>

/// Parses the whole text. @return none for anything else or a number that does not fit the type
template <typename Number>
std::optional<Number> ParseNumber(const std::string& text) {
    Number number = 0;
    const char* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stopped == end ? std::optional(number) : std::nullopt;
}
