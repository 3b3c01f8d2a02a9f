#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

struct Color {
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
};

/// Colours of levels from low to high: from black over red to light yellow. Their lightness rises evenly, so that
/// they read in grey as well.
constexpr std::size_t kColorLevels = 60;
std::array<Color, kColorLevels> ColorMap();
