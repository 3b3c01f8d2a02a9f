#include "host/page/bitmap_text.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::size_t kColumns = 5;
constexpr std::size_t kRows = 7;
constexpr std::size_t kScale = kTextHeight / kRows;

struct Glyph {
    char letter;
    std::array<std::uint8_t, kRows>
        rows;  ///< from the top; the highest of 5 bits is the leftmost pixel
};

// clang-format off
constexpr std::array<Glyph, 34> kFont = {{
    {'0', {0b01110, 0b10001, 0b10011, 0b10101, 0b11001, 0b10001, 0b01110}},
    {'1', {0b00100, 0b01100, 0b00100, 0b00100, 0b00100, 0b00100, 0b01110}},
    {'2', {0b01110, 0b10001, 0b00001, 0b00110, 0b01000, 0b10000, 0b11111}},
    {'3', {0b11110, 0b00001, 0b00001, 0b01110, 0b00001, 0b00001, 0b11110}},
    {'4', {0b00010, 0b00110, 0b01010, 0b10010, 0b11111, 0b00010, 0b00010}},
    {'5', {0b11111, 0b10000, 0b11110, 0b00001, 0b00001, 0b10001, 0b01110}},
    {'6', {0b00110, 0b01000, 0b10000, 0b11110, 0b10001, 0b10001, 0b01110}},
    {'7', {0b11111, 0b00001, 0b00010, 0b00100, 0b00100, 0b01000, 0b01000}},
    {'8', {0b01110, 0b10001, 0b10001, 0b01110, 0b10001, 0b10001, 0b01110}},
    {'9', {0b01110, 0b10001, 0b10001, 0b01111, 0b00001, 0b00010, 0b01100}},
    {'A', {0b01110, 0b10001, 0b10001, 0b11111, 0b10001, 0b10001, 0b10001}},
    {'B', {0b11110, 0b10001, 0b10001, 0b11110, 0b10001, 0b10001, 0b11110}},
    {'C', {0b01110, 0b10001, 0b10000, 0b10000, 0b10000, 0b10001, 0b01110}},
    {'D', {0b11110, 0b10001, 0b10001, 0b10001, 0b10001, 0b10001, 0b11110}},
    {'E', {0b11111, 0b10000, 0b10000, 0b11110, 0b10000, 0b10000, 0b11111}},
    {'F', {0b11111, 0b10000, 0b10000, 0b11110, 0b10000, 0b10000, 0b10000}},
    {'H', {0b10001, 0b10001, 0b10001, 0b11111, 0b10001, 0b10001, 0b10001}},
    {'I', {0b01110, 0b00100, 0b00100, 0b00100, 0b00100, 0b00100, 0b01110}},
    {'K', {0b10001, 0b10010, 0b10100, 0b11000, 0b10100, 0b10010, 0b10001}},
    {'M', {0b10001, 0b11011, 0b10101, 0b10101, 0b10001, 0b10001, 0b10001}},
    {'O', {0b01110, 0b10001, 0b10001, 0b10001, 0b10001, 0b10001, 0b01110}},
    {'P', {0b11110, 0b10001, 0b10001, 0b11110, 0b10000, 0b10000, 0b10000}},
    {'R', {0b11110, 0b10001, 0b10001, 0b11110, 0b10100, 0b10010, 0b10001}},
    {'S', {0b01111, 0b10000, 0b10000, 0b01110, 0b00001, 0b00001, 0b11110}},
    {'T', {0b11111, 0b00100, 0b00100, 0b00100, 0b00100, 0b00100, 0b00100}},
    {'V', {0b10001, 0b10001, 0b10001, 0b10001, 0b01010, 0b01010, 0b00100}},
    {'Z', {0b11111, 0b00001, 0b00010, 0b00100, 0b01000, 0b10000, 0b11111}},
    {'d', {0b00001, 0b00001, 0b01111, 0b10001, 0b10001, 0b10001, 0b01111}},
    {'k', {0b10000, 0b10000, 0b10010, 0b10100, 0b11000, 0b10100, 0b10010}},
    {'z', {0b00000, 0b00000, 0b11111, 0b00010, 0b00100, 0b01000, 0b11111}},
    {'s', {0b00000, 0b00000, 0b01111, 0b10000, 0b01110, 0b00001, 0b11110}},
    {'-', {0b00000, 0b00000, 0b00000, 0b01110, 0b00000, 0b00000, 0b00000}},
    {'.', {0b00000, 0b00000, 0b00000, 0b00000, 0b00000, 0b01100, 0b01100}},
    {':', {0b00000, 0b01100, 0b01100, 0b00000, 0b01100, 0b01100, 0b00000}},
}};
// clang-format on

bool IsSet(const Glyph& glyph, std::size_t column, std::size_t row) {
    return (glyph.rows[row] >> (kColumns - 1 - column) & 1) != 0;
}

void DrawGlyph(IndexedImage& image, std::size_t x, std::size_t y, const Glyph& glyph,
               std::uint8_t color) {
    for (std::size_t row = 0; row < kRows * kScale; ++row) {
        for (std::size_t column = 0; column < kColumns * kScale; ++column) {
            if (IsSet(glyph, column / kScale, row / kScale) && x + column < image.width &&
                y + row < image.height) {
                image.At(x + column, y + row) = color;
            }
        }
    }
}

}  // namespace

std::size_t TextWidth(std::string_view text) {
    return text.empty() ? 0 : (text.size() * (kColumns + 1) - 1) * kScale;
}

void DrawText(IndexedImage& image, std::size_t x, std::size_t y, std::string_view text,
              std::uint8_t color) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto* const glyph = std::find_if(
            kFont.begin(), kFont.end(), [&](const Glyph& each) { return each.letter == text[i]; });
        if (glyph != kFont.end()) {
            DrawGlyph(image, x + i * (kColumns + 1) * kScale, y, *glyph, color);
        }
    }
}
