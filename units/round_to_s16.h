#pragma once

#include <cstdint>

namespace audio_filter::internal {

/// Saturates to the range of 16-bit samples; NaN becomes -32768.
constexpr float BoundedToS16(float sample) {
    const float atLeast = sample > -32768.0F ? sample : -32768.0F;
    return atLeast < 32767.0F ? atLeast : 32767.0F;
}

/// Rounds a saturated sample to nearest, halves away from zero. Not std::round: some C libraries add a
/// half, which turns 0.49999997 into 1. Doubling is exact.
constexpr short RoundBoundedToS16(float bounded) {
    const auto halves = static_cast<std::int32_t>(2.0F * bounded);
    return static_cast<short>((halves + (halves < 0 ? -1 : 1)) / 2);
}

}  // namespace audio_filter::internal
