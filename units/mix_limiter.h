#pragma once

#include <cstdint>
#include <type_traits>

namespace audio_filter::internal {

/// The arithmetic of AudioMixing: a soft limiter of five slopes, and the conversion of float samples
/// through 16 bits.

/// Limits a sum of 16-bit samples to below full scale: slopes 7/8, 7/64, 7/512, 7/4096 and 7/32768,
/// each over 32768 values of the magnitude. The largest output magnitude is 32766. From five times
/// full scale on, the output cycles within 32760..32766 instead of staying flat; callers rely on it.
constexpr short LimitSum(int sum) {
    const int magnitude = sum < 0 ? -sum : sum;
    const int wholes = magnitude >> 15;
    const int slope = wholes < 4 ? wholes : 4;
    // The distance to 32768: 262144 eighths, 7 fewer per step; each slope is an eighth of the last.
    const int limited = (((magnitude & 0x7FFF) * 7 - 262144) >> (3 * slope + 3)) + 32768;
    const int sign = sum >> 31;
    return static_cast<short>((limited ^ sign) - sign);
}

/// The same for two samples. Their sum needs two slopes only, so 16 bits hold every intermediate.
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

/// Conversion into the mixer: the identity for 16-bit samples.
constexpr short ToMixerSample(short sample) {
    return sample;
}

/// Conversion into the mixer of a float sample: times 32767, truncated, the low 16 bits kept, so that
/// samples beyond -1..1 deliberately wrap around. A value that does not fit 32 bits becomes 0.
constexpr short ToMixerSample(float sample) {
    const float scaled = sample * 32767.0F;
    const bool fits = scaled >= -2147483648.0F && scaled < 2147483648.0F;
    return static_cast<short>(static_cast<int>(fits ? scaled : 0.0F));
}

/// Conversion out of the mixer: the identity at 16 bits, division by 32767 for float. The rule that
/// sets floats beyond 0.99999999 to full scale never applies: the limiter ends at 32766 / 32767.
template <typename Sample>
constexpr Sample FromMixerSample(short limited) {
    if constexpr (std::is_same_v<Sample, float>) {
        return static_cast<float>(limited) / 32767.0F;
    } else {
        return limited;
    }
}

}  // namespace audio_filter::internal
