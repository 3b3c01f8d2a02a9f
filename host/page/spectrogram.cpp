#include "host/page/spectrogram.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kStep = 10.0;  ///< the ends of the scale are multiples, in dB
constexpr double kHighestEnd = 0.0;
constexpr double kLowestEnd = -60.0;

/// The rows of a pixel column: means of the columns of history that it covers, or the nearest.
std::vector<float> RowsAt(const ColumnHistory& history, Version version, std::size_t x,
                          std::size_t width) {
    const std::vector<HistoryColumn>& columns = history.Columns();
    const std::size_t begin = x * columns.size() / width;
    const std::size_t end = std::max(begin + 1, (x + 1) * columns.size() / width);
    std::vector<float> rows(ColumnHistory::kRows);
    for (std::size_t i = begin; i < end; ++i) {
        const std::vector<float>& spectrum = columns[i].spectra[static_cast<std::size_t>(version)];
        for (std::size_t row = 0; row < rows.size(); ++row) {
            rows[row] += spectrum[row] / static_cast<float>(end - begin);
        }
    }
    return rows;
}

}  // namespace

std::uint8_t LevelScale::LevelOf(float power) const {
    const double level = 10.0 * std::log10(std::max(static_cast<double>(power), 1e-30));
    const double share = std::clamp((level - lowest) / kRangeDb, 0.0, 1.0);
    return static_cast<std::uint8_t>(std::lround(share * (kColorLevels - 1)));
}

LevelScale ScaleOf(const ColumnHistory& history) {
    float most = 0.0F;
    for (const HistoryColumn& column : history.Columns()) {
        for (const Version version : {Version::kBefore, Version::kAfter}) {
            for (const float power : column.spectra[static_cast<std::size_t>(version)]) {
                most = std::max(most, power);
            }
        }
    }
    const double level = most > 0.0F ? 10.0 * std::log10(static_cast<double>(most)) : kLowestEnd;
    return {std::clamp(std::ceil(level / kStep) * kStep, kLowestEnd, kHighestEnd) -
            LevelScale::kRangeDb};
}

IndexedImage Spectrogram(const ColumnHistory& history, Version version, const LevelScale& scale,
                         std::size_t width) {
    constexpr std::size_t kHeight = ColumnHistory::kRows;
    IndexedImage image(width, kHeight);
    for (std::size_t x = 0; x < width && !history.Columns().empty(); ++x) {
        const std::vector<float> rows = RowsAt(history, version, x, width);
        for (std::size_t y = 0; y < kHeight; ++y) {
            image.At(x, y) = scale.LevelOf(rows[kHeight - 1 - y]);
        }
    }
    return image;
}
