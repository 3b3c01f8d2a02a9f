#pragma once

#include <cstdint>
#include <type_traits>

namespace audio_filter::internal {

/// The arithmetic of AudioMixing: a soft limiter of five segments, and the way of a float sample
/// through 16 bits.

/// The sum of 16-bit samples, brought below full scale: slope 7/8, 7/64, 7/512, 7/4096, 7/32768,
/// each over 32768 values of the magnitude. The largest magnitude out is 32766. From five times
/// full scale on the output cycles within 32760..32766 instead of staying flat; callers rely on
/// that.
constexpr short LimitSum(int sum) {
    const int magnitude = sum < 0 ? -sum : sum;
    const int wholes = magnitude >> 15;
    const int segment = wholes < 4 ? wholes : 4;
    // What is left to 32768: 262144 eighths at first, 7 fewer a step; a segment later, an eighth.
    const int limited = (((magnitude & 0x7FFF) * 7 - 262144) >> (3 * segment + 3)) + 32768;
    const int sign = sum >> 31;
    return static_cast<short>((limited ^ sign) - sign);
}

/// The same for two samples, whose sum ends with the second segment: 16 bits hold every value on
/// the way.
constexpr short LimitSumOfTwo(short a, short b) {
    using Word = std::uint16_t;
    const auto sevenEighths = [](Word value) {
        return static_cast<Word>(value - static_cast<Word>(static_cast<Word>(value + 7) >> 3));
    };
    const auto half = static_cast<short>((a & b) + ((a ^ b) >> 1));  // of the sum, rounded down
    const auto sign = static_cast<Word>(half >> 15);
    const auto within = static_cast<Word>((a + b) ^ sign);  // the magnitude, 1 less if negative
    const auto bound = static_cast<Word>(32768 + sign);
    const Word first = within < bound ? within : bound;
    const auto second = static_cast<Word>(within - first);
    const auto limited = static_cast<Word>(sevenEighths(static_cast<Word>(first - sign)) +
                                           (sevenEighths(second) >> 3));
    return static_cast<short>((limited ^ sign) - sign);
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
    return static_cast<short>(static_cast<int>(fits ? scaled : 0.0F));
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

}  // namespace audio_filter::internal
