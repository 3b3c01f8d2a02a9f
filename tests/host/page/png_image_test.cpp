#include "host/page/png_image.h"

#include <gtest/gtest.h>
#include <png.h>

#include "host/page/bitmap_text.h"
#include "host/page/color_map.h"

namespace {

struct DecodedPng {
    std::size_t width;
    std::size_t height;
    std::vector<std::uint8_t> rgb;
};

DecodedPng DecodePng(const std::string& bytes) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()), 0);
    image.format = PNG_FORMAT_RGB;
    std::vector<std::uint8_t> rgb(PNG_IMAGE_SIZE(image));
    EXPECT_NE(png_image_finish_read(&image, nullptr, rgb.data(), 0, nullptr), 0);
    return {image.width, image.height, rgb};
}

/// Relative luminance (ITU-R BT.709) of linear light.
double Luminance(const Color& color) {
    const auto linear = [](std::uint8_t value) { return std::pow(value / 255.0, 2.2); };
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

TEST(PngImage, LibpngReadsTheSame3By2PixelsBack) {
    IndexedImage image(3, 2);
    image.At(2, 0) = 1;
    image.At(0, 1) = 2;
    const DecodedPng decoded = DecodePng(EncodePng(image, {{0, 0, 0}, {255, 128, 1}, {9, 8, 7}}));
    EXPECT_EQ(decoded.width, 3U);
    EXPECT_EQ(decoded.height, 2U);
    const std::vector<std::uint8_t> expected = {0, 0, 0, 0, 0, 0, 255, 128, 1,
                                                9, 8, 7, 0, 0, 0, 0,   0,   0};
    EXPECT_EQ(decoded.rgb, expected);
}

TEST(ColorMap, EveryLevelIsLighterThanTheOneBelowByAboutTheSame) {
    const auto colors = ColorMap();
    const auto lightness = [&](std::size_t i) { return std::cbrt(Luminance(colors[i])); };
    const double mean = (lightness(kColorLevels - 1) - lightness(0)) / (kColorLevels - 1);
    for (std::size_t level = 1; level < kColorLevels; ++level) {
        const double step = lightness(level) - lightness(level - 1);
        EXPECT_GT(step, 0.3 * mean) << level;
        EXPECT_LT(step, 3.0 * mean) << level;
    }
}

TEST(BitmapText, ADigitIs10By14PixelsAndEachLetter12Wide) {
    EXPECT_EQ(TextWidth("1"), 10U);
    EXPECT_EQ(TextWidth("kHz"), 34U);
    IndexedImage image(16, 16);
    DrawText(image, 1, 1, "1", 5);
    EXPECT_EQ(std::count(image.pixels.begin(), image.pixels.end(), 5), 4 * 10);
    EXPECT_EQ(image.At(5, 1), 5);
    EXPECT_EQ(image.At(1, 1), 0);
}

TEST(BitmapText, TextBeyondTheEdgeIsCutOff) {
    IndexedImage image(4, 4);
    DrawText(image, 0, 0, "888", 1);
    EXPECT_EQ(image.pixels.size(), 16U);
}

}  // namespace
