#include "host/page/spectrogram_picture.h"

#include <array>
#include <cmath>

#include "host/page/axis.h"
#include "host/page/bitmap_text.h"
#include "host/page/spectrogram.h"

namespace {

constexpr std::size_t kPlotWidth = 960;
constexpr std::size_t kPlotHeight = ColumnHistory::kRows;
constexpr std::size_t kLeft = 84;
constexpr std::size_t kTop = 34;
constexpr std::size_t kPanelHeight = kTop + kPlotHeight;
constexpr std::size_t kBottom = 40;
constexpr std::size_t kLegendLeft = kLeft + kPlotWidth + 24;
constexpr std::size_t kLegendWidth = 18;
constexpr std::size_t kWidth = kLegendLeft + kLegendWidth + 90;
constexpr std::size_t kHeight = kVersions.size() * kPanelHeight + kBottom;
constexpr std::size_t kTickLength = 6;
constexpr std::array kPanelTitles = {"BEFORE", "AFTER", "REMOVED"};

// Colours behind those of the levels.
constexpr std::uint8_t kPaper = kColorLevels;
constexpr std::uint8_t kInk = kColorLevels + 1;

std::vector<Color> Palette() {
    const auto levels = ColorMap();
    std::vector<Color> palette(levels.begin(), levels.end());
    palette.push_back({255, 255, 255});
    palette.push_back({0, 0, 0});
    return palette;
}

std::size_t PixelOf(double share, std::size_t pixels) {
    return static_cast<std::size_t>(std::lround(share * static_cast<double>(pixels - 1)));
}

void DrawRow(IndexedImage& image, std::size_t x, std::size_t y, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        image.At(x + i, y) = kInk;
    }
}

/// Marks beside a vertical axis, with the labels on the outer side.
void DrawFrequencies(IndexedImage& image, std::size_t top, double highest) {
    for (const Tick& tick : LinearTicks(0.0, highest / 1000.0, 6)) {
        const std::size_t y = top + kPlotHeight - 1 - PixelOf(tick.share, kPlotHeight);
        DrawRow(image, kLeft - kTickLength, y, kTickLength);
        const std::size_t right = kLeft - kTickLength - 4;
        const std::size_t labelTop = y < kTextHeight / 2 ? 0 : y - kTextHeight / 2;
        DrawText(image, right - TextWidth(tick.label), labelTop, tick.label, kInk);
    }
    DrawText(image, kLeft - kTickLength - 8 - TextWidth("kHz"), top - kTextHeight - 8, "kHz", kInk);
}

void DrawTimes(IndexedImage& image, double seconds) {
    const std::size_t top = kVersions.size() * kPanelHeight;
    for (const Tick& tick : TimeTicks(seconds)) {
        const std::size_t x = kLeft + PixelOf(tick.share, kPlotWidth);
        for (std::size_t y = 0; y < kTickLength; ++y) {
            image.At(x, top + y) = kInk;
        }
        DrawText(image, x - TextWidth(tick.label) / 2, top + kTickLength + 6, tick.label, kInk);
    }
}

void DrawLegend(IndexedImage& image, const LevelScale& scale) {
    constexpr std::size_t kLegendHeight = kPlotHeight;
    for (std::size_t y = 0; y < kLegendHeight; ++y) {
        const std::size_t level = (kLegendHeight - 1 - y) * kColorLevels / kLegendHeight;
        for (std::size_t x = 0; x < kLegendWidth; ++x) {
            image.At(kLegendLeft + x, kTop + y) = static_cast<std::uint8_t>(level);
        }
    }
    for (const Tick& tick : LinearTicks(scale.lowest, scale.Highest(), 6)) {
        const std::size_t y = kTop + kLegendHeight - 1 - PixelOf(tick.share, kLegendHeight);
        DrawRow(image, kLegendLeft + kLegendWidth, y, kTickLength);
        DrawText(image, kLegendLeft + kLegendWidth + kTickLength + 4, y - kTextHeight / 2,
                 tick.label, kInk);
    }
    DrawText(image, kLegendLeft, kTop - kTextHeight - 8, "dBFS", kInk);
}

}  // namespace

std::string SpectrogramPicture(const ColumnHistory& history) {
    IndexedImage image(kWidth, kHeight, kPaper);
    const LevelScale scale = ScaleOf(history);
    for (std::size_t panel = 0; panel < kVersions.size(); ++panel) {
        const std::size_t top = panel * kPanelHeight + kTop;
        const IndexedImage plot = Spectrogram(history, kVersions[panel], scale, kPlotWidth);
        for (std::size_t y = 0; y < kPlotHeight; ++y) {
            for (std::size_t x = 0; x < kPlotWidth; ++x) {
                image.At(kLeft + x, top + y) = plot.At(x, y);
            }
        }
        DrawText(image, kLeft, top - kTextHeight - 8, kPanelTitles[panel], kInk);
        DrawFrequencies(image, top, history.HighestFrequency());
    }
    DrawTimes(image, history.Seconds());
    DrawLegend(image, scale);
    return EncodePng(image, Palette());
}
