#pragma once

#include <cstddef>

#include "host/page/column_history.h"
#include "host/page/png_image.h"

/// The levels that the colours of a spectrogram stand for, in dBFS per row of frequencies.
struct LevelScale {
    static constexpr double kRangeDb = 90.0;

    double lowest;
    double Highest() const { return lowest + kRangeDb; }

    /// Index into ColorMap(). @param power mean square
    std::uint8_t LevelOf(float power) const;
};

/// A scale that ends just above the highest level of the signal before and after cleaning.
LevelScale ScaleOf(const ColumnHistory& history);

/// Time from left to right, frequency from the bottom to the top; pixels are indices into ColorMap().
IndexedImage Spectrogram(const ColumnHistory& history, Version version, const LevelScale& scale,
                         std::size_t width);
