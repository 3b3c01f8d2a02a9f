#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace audio_filter::internal {

/// The features of the music detector, the share of low-energy segments and the distribution of power
/// in the upper half of the spectrum, and the nearest-centre tests on them.

/// The sum of the squares of a segment.
double SegmentEnergy(std::span<const float> segment);

/// The energies of overlapping windowed segments, hop samples apart: each the sum of the squares in
/// the order of the samples. Samples past the end of the signal count as 0.
void SegmentEnergies(std::span<const float> signal, std::size_t hop, std::span<const float> window,
                     std::span<double> energies);

/// The share of segments with less energy than `ratio` times the mean, 0..1. NaN without segments.
float LowEnergyRate(std::span<const double> energies, float ratio);

/// The power of the bins bandStart * 1..1.125, 1.25..1.5 and 1.5..2 over that of all of 1..2 times
/// bandStart. Bins that are missing count as 0; NaN where all of them do.
std::array<float, 3> SubBandRatios(std::span<const float> magnitudes, std::size_t bandStart);

/// The same for the magnitudes of the bins from bandStart on.
std::array<float, 3> UpperBandRatios(std::span<const float> band, std::size_t bandStart);

/// Euclidean distance of two points.
float Distance(std::span<const float> a, std::span<const float> b);

/// Whether centre 0 is the nearest to a value, or as near as the nearest. Centres at a distance of
/// 1 or more are ignored, except centre 0 at exactly 1.
bool IsNearestToCentre0(float value, std::span<const float> centres);

/// Whether any of the four low-energy rates is nearest to centre 0 of its row.
/// @param thresholds the four ratios of the rates
/// @param centres four rows of four centres
bool IsSpeechByLowEnergy(std::span<const double> energies, const float* thresholds,
                         const float (*centres)[4]);

}  // namespace audio_filter::internal
