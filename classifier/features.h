#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace audio_filter::internal {

/// What the classifier measures: how many frames are quiet beside the mean, and how the power of
/// the upper half of the spectrum is spread; and how near that is to what is known.

/// Sum of the squares of a frame.
double SegmentEnergy(std::span<const float> frame);

/// The energies of overlapping frames: of each windowed frame, hop samples after the one before,
/// the sum of the squares in the order of the samples. What reaches past the signal counts as 0.
void SegmentEnergies(std::span<const float> signal, std::size_t hop, std::span<const float> window,
                     std::span<double> energies);

/// The share of frames with less energy than `ratio` times the mean, 0..1. NaN without frames.
float LowEnergyRate(std::span<const double> energies, float ratio);

/// The power of the bins bandStart * 1..1.125, 1.25..1.5 and 1.5..2 over that of all of 1..2 times
/// bandStart. Bins that are missing count as 0; NaN where all of them do.
std::array<float, 3> SubBandRatios(std::span<const float> magnitudes, std::size_t bandStart);

/// The same of the magnitudes of the bins from bandStart on.
std::array<float, 3> UpperBandRatios(std::span<const float> band, std::size_t bandStart);

/// Euclidean distance of two points.
float Distance(std::span<const float> a, std::span<const float> b);

/// Whether centre 0 is the nearest to a value, or as near as the nearest. Centres at a distance of
/// 1 or more are not looked at, except for centre 0 at exactly 1.
bool IsNearestToCentre0(float value, std::span<const float> centres);

/// Whether one of four low-energy rates, a row of centres each, is nearest to its centre 0.
/// @param thresholds four, the ratios of the rates
/// @param centres four rows
bool IsSpeechByLowEnergy(std::span<const double> energies, const float* thresholds,
                         const float (*centres)[4]);

}  // namespace audio_filter::internal
