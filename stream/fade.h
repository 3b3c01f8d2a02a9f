#pragma once

#include <cmath>
#include <cstddef>
#include <span>

namespace audio_filter::internal {

/// The weight of the second of two signals: moves linearly between 0 and 1 over a fixed number of frames.
class Fade {
public:
    /// At 0. @param length frames, at least 1
    explicit Fade(std::size_t length) : mLength(length) {}

    bool IsAt0() const { return mAt == 0; }
    bool IsAt1() const { return mAt == mLength; }

    /// Jumps to an end.
    void Start(bool at1) { mAt = at1 ? mLength : 0; }

    /// Moves towards an end, and stays there.
    /// @param weights of the next frames
    void Advance(bool to1, std::span<float> weights) {
        for (float& weight : weights) {
            mAt += to1 && mAt < mLength ? 1 : 0;
            mAt -= !to1 && mAt > 0 ? 1 : 0;
            weight = static_cast<float>(mAt) / static_cast<float>(mLength);
        }
    }

private:
    std::size_t mLength;
    std::size_t mAt = 0;
};

/// 0 for a sample that is not finite.
inline float FiniteOr0(float sample) {
    return std::isfinite(sample) ? sample : 0.0F;
}

/// Fades from one signal to another, all of one length. `out` may be either.
inline void Crossfade(std::span<const float> from, std::span<const float> to,
                      std::span<const float> weights, std::span<float> out) {
    for (std::size_t i = 0; i < out.size(); ++i) {
        out[i] = (1.0F - weights[i]) * FiniteOr0(from[i]) + weights[i] * FiniteOr0(to[i]);
    }
}

}  // namespace audio_filter::internal
