#pragma once

#include <cstddef>
#include <span>

#include "common/pcm_view.h"

namespace audio_filter::internal {

/// Pre-emphasis, windowing and segmentation of the music detector's signal.

/// Pre-emphasis, y[n] = x[n] - coefficient * x[n - 1], with x[-1] = 0.
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

/// Fills a symmetric Hamming window, times a gain. A single coefficient is NaN.
void HammingWindow(std::span<float> window, float gain);

/// The number of segments of a signal: (signalLength - segmentLength) / hop + 1, the division
/// truncating towards zero. A signal that is shorter than a segment by less than a hop thus has one,
/// incomplete. 0 for a negative number, or for a hop of 0.
unsigned short CountSegments(std::size_t signalLength, std::size_t segmentLength, std::size_t hop);

/// Segment `index` of a signal, windowed. Samples past the end of the signal are 0.
/// @param segment as long as the window
void CutSegment(std::span<const float> signal, std::size_t index, std::size_t hop,
                std::span<const float> window, std::span<float> segment);

}  // namespace audio_filter::internal
