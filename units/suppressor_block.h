#pragma once

#include <cstddef>

namespace audio_filter::internal {

/// The suppressor's frame, in samples of one channel: 10 ms at 32000 Hz, in two bands of half the
/// samples each.
inline constexpr std::size_t kBlockSamples = 320;
inline constexpr std::size_t kBandSamples = kBlockSamples / 2;

}  // namespace audio_filter::internal
