#include "classifier/segmentation.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace audio_filter::internal {

void HammingWindow(std::span<float> window, float gain) {
    const float pi = std::acos(-1.0F);
    const float twoPi = 2.0F * pi;
    const std::size_t length = window.size();
    for (std::size_t i = 0; i < (length + 1) / 2; ++i) {
        const float angle = static_cast<float>(i) * twoPi / static_cast<float>(length - 1);
        const auto cosine = static_cast<double>(std::cos(angle));
        const auto weight = static_cast<float>((0.54 - 0.46 * cosine) * static_cast<double>(gain));
        window[i] = weight;
        window[length - 1 - i] = weight;
    }
}

unsigned short CountSegments(std::size_t signalLength, std::size_t segmentLength, std::size_t hop) {
    if (hop == 0) {
        return 0;
    }
    const std::int64_t spare =
        static_cast<std::int64_t>(signalLength) - static_cast<std::int64_t>(segmentLength);
    const std::int64_t segments = spare / static_cast<std::int64_t>(hop) + 1;
    return static_cast<unsigned short>(std::max<std::int64_t>(segments, 0));
}

void CutSegment(std::span<const float> signal, std::size_t index, std::size_t hop,
                std::span<const float> window, std::span<float> segment) {
    const std::size_t start = std::min(index * hop, signal.size());
    const std::size_t inside = std::min(signal.size() - start, segment.size());
    for (std::size_t i = 0; i < inside; ++i) {
        segment[i] = signal[start + i] * window[i];
    }
    std::fill(segment.begin() + static_cast<std::ptrdiff_t>(inside), segment.end(), 0.0F);
}

}  // namespace audio_filter::internal
