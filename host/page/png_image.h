#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/page/color_map.h"

/// A picture of up to 256 colours.
struct IndexedImage {
    IndexedImage(std::size_t imageWidth, std::size_t imageHeight, std::uint8_t background = 0)
        : width(imageWidth), height(imageHeight), pixels(imageWidth * imageHeight, background) {}

    std::uint8_t& At(std::size_t x, std::size_t y) { return pixels[y * width + x]; }
    std::uint8_t At(std::size_t x, std::size_t y) const { return pixels[y * width + x]; }

    std::size_t width;
    std::size_t height;
    std::vector<std::uint8_t> pixels;  ///< indices of colours, row by row from the top
};

/// The bytes of a PNG file.
std::string EncodePng(const IndexedImage& image, const std::vector<Color>& palette);
