#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "host/page/png_image.h"

/// Width of a text in pixels, without a space behind it.
std::size_t TextWidth(std::string_view text);
constexpr std::size_t kTextHeight = 14;

/// Draws capital letters, digits and some signs; letters that the font lacks become spaces.
/// @param x, y upper left corner
void DrawText(IndexedImage& image, std::size_t x, std::size_t y, std::string_view text,
              std::uint8_t color);
