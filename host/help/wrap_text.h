#pragma once

#include <cstddef>
#include <string>

/// Breaks a text into lines of words.
/// @param columns of the longest line; a longer word has a line of its own
std::string WrapText(const std::string& text, std::size_t columns);
