#include "stream/to_s16.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace audio_filter::internal {

namespace {

constexpr float kFullScale = 32768.0F;

/// Converts to the nearest 16-bit values. @return whether all samples are such values
bool ConvertExactly(std::span<const float> in, std::span<short> out) {
    std::transform(in.begin(), in.end(), out.begin(), NearestS16);
    int inexact = 0;
    for (std::size_t i = 0; i < in.size(); ++i) {
        inexact |= static_cast<int>(static_cast<float>(out[i]) != in[i] * kFullScale);
    }
    return inexact == 0;
}

}  // namespace

/// The sum of two uniform variables, in steps: -1..1. The generator is that of Numerical Recipes.
float ToS16::Dither() {
    const auto uniform = [this] {
        mSeed = mSeed * 1664525U + 1013904223U;
        return static_cast<float>(mSeed >> 8) * 0x1p-24F;
    };
    const float first = uniform();
    return first - uniform();
}

void ToS16::Convert(std::span<const float> in, std::span<short> out) {
    if (ConvertExactly(in, out)) {
        return;
    }
    std::transform(in.begin(), in.end(), out.begin(), [this](float sample) {
        const float dither = Dither() / kFullScale;
        return std::isfinite(sample) ? NearestS16(sample + dither) : short{0};
    });
}

}  // namespace audio_filter::internal
