#include "host/page/color_map.h"

#include <algorithm>
#include <cmath>

namespace {

/// Points of the colour map "inferno" of matplotlib (public domain, CC0), at even distances.
constexpr std::array<Color, 13> kMapPoints = {{{0, 0, 4},
                                               {16, 9, 45},
                                               {42, 11, 86},
                                               {74, 12, 107},
                                               {104, 22, 110},
                                               {134, 33, 107},
                                               {165, 45, 96},
                                               {194, 59, 79},
                                               {219, 80, 59},
                                               {239, 107, 33},
                                               {250, 142, 9},
                                               {250, 199, 47},
                                               {252, 255, 164}}};

std::uint8_t Between(std::uint8_t low, std::uint8_t high, double share) {
    return static_cast<std::uint8_t>(std::lround(low + (high - low) * share));
}

}  // namespace

std::array<Color, kColorLevels> ColorMap() {
    std::array<Color, kColorLevels> colors = {};
    for (std::size_t level = 0; level < kColorLevels; ++level) {
        const double at = static_cast<double>(level * (kMapPoints.size() - 1)) / (kColorLevels - 1);
        const std::size_t point = std::min(static_cast<std::size_t>(at), kMapPoints.size() - 2);
        const double share = at - static_cast<double>(point);
        const Color& low = kMapPoints[point];
        const Color& high = kMapPoints[point + 1];
        colors[level] = {Between(low.red, high.red, share), Between(low.green, high.green, share),
                         Between(low.blue, high.blue, share)};
    }
    return colors;
}
