#pragma once

#include <cstddef>

/// The suppressor's frame, in samples of one channel: 10 ms at 32000 Hz, in two bands of half the
/// samples each.
inline constexpr std::size_t kFrameSamples = 320;
inline constexpr std::size_t kBandSamples = kFrameSamples / 2;
