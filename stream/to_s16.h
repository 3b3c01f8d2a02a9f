#pragma once

#include <cstdint>
#include <span>

namespace audio_filter::internal {

/// Converts samples with full scale at 1 to 16 bits. A block that fits 16 bits is converted exactly; any
/// other is dithered: triangular, two steps wide, as in Lipshitz, Wannamaker and Vanderkooy,
/// "Quantization and Dither" (1992). Samples beyond full scale are clipped; samples that are not finite
/// become 0.
class ToS16 {
public:
    /// @param seed differs between channels, whose dither is then independent
    explicit ToS16(std::uint32_t seed) : mSeed(seed) {}

    /// [audio] @param out as long as `in`
    void Convert(std::span<const float> in, std::span<short> out);

private:
    float Dither();

    std::uint32_t mSeed;
};

/// Rounds to nearest, ties to even; exact for magnitudes up to 2^22. Vectorises, unlike std::lrint.
constexpr float RoundToNearest(float value) {
    constexpr float kShift = 12582912.0F;  // 1.5 * 2^23: the sum has no fractional bits
    return (value + kShift) - kShift;
}

/// The nearest 16-bit value, clipped; 0 for NaN.
constexpr short NearestS16(float sample) {
    const float scaled = sample * 32768.0F;
    const float low = scaled > -32768.0F ? scaled : -32768.0F;
    const float clipped = low < 32767.0F ? low : 32767.0F;
    return static_cast<short>(RoundToNearest(sample == sample ? clipped : 0.0F));
}

}  // namespace audio_filter::internal
