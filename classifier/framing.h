#pragma once

#include <cstddef>
#include <span>

#include "common/pcm_view.h"

namespace audio_filter::internal {

/// How the classifier's signal is prepared and cut.

/// Pre-emphasis, y[n] = x[n] - coefficient * x[n - 1], beginning after silence.
/// @param out at most as long as the input
template <typename Sample>
void Emphasise(PcmView<const Sample> in, float coefficient, std::span<float> out) {
    if (!out.empty()) {
        out[0] = static_cast<float>(in.Get(0)) - coefficient * 0.0F;
    }
    for (std::size_t n = 1; n < out.size(); ++n) {
        out[n] = static_cast<float>(in.Get(n)) - coefficient * static_cast<float>(in.Get(n - 1));
    }
}

/// Fills a symmetric Hamming window, times a gain. That of a single coefficient is NaN.
void HammingWindow(std::span<float> window, float gain);

/// How many frames fit a signal: (length - frame) / hop + 1, where the division drops the remainder
/// towards zero. Hence one frame, not whole, for a signal that is shorter by less than a hop. None
/// for a negative number, or without a hop.
unsigned short CountSegments(std::size_t signalLength, std::size_t frameLength, std::size_t hop);

/// Frame `index` of a signal, windowed. What reaches past the signal is 0.
/// @param frame as long as the window
void CutSegment(std::span<const float> signal, std::size_t index, std::size_t hop,
                std::span<const float> window, std::span<float> frame);

}  // namespace audio_filter::internal
