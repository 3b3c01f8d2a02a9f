#pragma once

#include <cstddef>

#include "units/suppressor_block.h"

namespace audio_filter::internal {

/// How a stream of some rate reaches the suppressor, which takes blocks of 320 samples and is made for
/// 32000 Hz. Rates above 24000 up to 48000 Hz are taken as they are; the others are resampled by an integer
/// factor, so that blocks and delays are whole numbers of frames.
struct RatePlan {
    int up = 1;    ///< samples of the suppressor per frame
    int down = 1;  ///< frames per sample of the suppressor

    static constexpr RatePlan For(int sampleRate) {
        if (sampleRate <= 12000) {
            return {.up = 4};
        }
        if (sampleRate <= 24000) {
            return {.up = 2};
        }
        return {.down = (sampleRate + 47999) / 48000};
    }

    constexpr bool Resamples() const { return up != 1 || down != 1; }

    /// Frames in a block of the suppressor.
    constexpr std::size_t BlockFrames() const {
        return kBlockSamples * static_cast<std::size_t>(down) / static_cast<std::size_t>(up);
    }
};

/// The longest block, at a quarter of the rate.
inline constexpr std::size_t kMaxBlockFrames = kBlockSamples * 4;

/// The delay of the suppressor in its own samples: 96 samples of a band of half the rate, and 4.7
/// in the band filters at low frequencies.
inline constexpr int kSuppressorDelay = 197;

}  // namespace audio_filter::internal
