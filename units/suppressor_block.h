#pragma once

#include <cstddef>

namespace audio_filter::internal {

/// The block size of the suppressor in samples of one channel, 10 ms at 32000 Hz, and that of each of
/// its two bands.
inline constexpr std::size_t kBlockSamples = 320;
inline constexpr std::size_t kBandSamples = kBlockSamples / 2;

}  // namespace audio_filter::internal
