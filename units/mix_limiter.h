#pragma once

#include <algorithm>
#include <type_traits>

/// The arithmetic of AudioMixing: a soft limiter of five segments, and the way of a float sample
/// through 16 bits.

/// The sum of 16-bit samples, brought below full scale: slope 7/8, 7/64, 7/512, 7/4096, 7/32768,
/// each over 32768 values of the magnitude. The largest magnitude out is 32766. From five times
/// full scale on the output cycles within 32760..32766 instead of staying flat; callers rely on
/// that.
constexpr short LimitSum(int sum) {
    constexpr int kShift[5] = {3, 6, 9, 12, 15};
    constexpr int kOffset[5] = {0, 28672, 32256, 32704, 32760};
    const int magnitude = sum < 0 ? -sum : sum;
    const int segment = std::min(magnitude >> 15, 4);
    const int limited = (((magnitude & 0x7FFF) * 7) >> kShift[segment]) + kOffset[segment];
    return static_cast<short>(sum < 0 ? -limited : limited);
}

/// A sample on its way in. A 16-bit one enters as it is.
constexpr short ToMixerSample(short sample) {
    return sample;
}

/// A float sample on its way in: times 32767, truncated, its low 16 bits kept, so that one beyond
/// -1..1 wraps around on purpose. What is not finite, or not 32 bits wide once scaled, enters as 0.
constexpr short ToMixerSample(float sample) {
    const float scaled = sample * 32767.0F;
    const bool fits = scaled >= -2147483648.0F && scaled < 2147483648.0F;
    return static_cast<short>(fits ? static_cast<int>(scaled) : 0);
}

/// A limited sample on its way out. A 16-bit one leaves as it is, a float one over 32767. Beyond
/// 0.99999999 a float would be set to full scale, but the limiter ends at 32766 / 32767.
template <typename Sample>
constexpr Sample FromMixerSample(short limited) {
    if constexpr (std::is_same_v<Sample, float>) {
        return static_cast<float>(limited) / 32767.0F;
    } else {
        return limited;
    }
}
