#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "common/pcm_view.h"

namespace audio_filter::internal {

/// The arithmetic of PhaseCheck: the classification of stereo frames by the polarity of their
/// channels, and its application to blocks.

/// Within -491..491 in both channels.
constexpr bool IsSilent(short left, short right) {
    return left >= -491 && left <= 491 && right >= -491 && right <= 491;
}

/// Strictly within -0.016..0.016 in both channels, in double precision.
constexpr bool IsSilent(float left, float right) {
    const double l = left;
    const double r = right;
    return l > -0.016 && l < 0.016 && r > -0.016 && r < 0.016;
}

template <typename Sample>
constexpr bool IsInPhase(Sample left, Sample right) {
    return (left > 0 && right > 0) || (left < 0 && right < 0);
}

template <typename Sample>
constexpr bool IsOpposed(Sample left, Sample right) {
    return (left > 0 && right < 0) || (left < 0 && right > 0);
}

/// The sample with inverted polarity. -32768 stays -32768.
constexpr short Negated(short sample) {
    return static_cast<short>(-sample);
}
constexpr float Negated(float sample) {
    return -sample;
}

/// The layout of a block: L R L R..., or all left samples before all right ones.
struct StereoLayout {
    std::size_t frames;
    bool planar;

    std::size_t Left(std::size_t frame) const { return planar ? frame : 2 * frame; }
    std::size_t Right(std::size_t frame) const { return planar ? frame + frames : 2 * frame + 1; }
};

/// The frames of a block by class. A frame that is neither silent nor in phase counts as opposed, even
/// if only one channel is loud.
struct PhaseCounts {
    std::int32_t inPhase = 0;
    std::int32_t opposed = 0;
    std::int32_t silent = 0;
};

/// Calls `visit(left, right)` with the input values of every frame. Negates the left samples in place
/// if `negateLeft`.
template <typename Sample, typename Visit>
void ForEachFrame(PcmView<Sample> samples, const StereoLayout& layout, bool negateLeft,
                  Visit visit) {
    for (std::size_t frame = 0; frame < layout.frames; ++frame) {
        const Sample left = samples.Get(layout.Left(frame));
        const Sample right = samples.Get(layout.Right(frame));
        if (negateLeft) {
            samples.Set(layout.Left(frame), Negated(left));
        }
        visit(left, right);
    }
}

/// Counts the frames of a block by their input values. Negates the left samples in place if
/// `negateLeft`.
PhaseCounts CountPhases(PcmView<short> samples, const StereoLayout& layout, bool negateLeft);
PhaseCounts CountPhases(PcmView<float> samples, const StereoLayout& layout, bool negateLeft);

/// The score after a block: plus one for a frame of opposite signs, minus one for one of equal signs,
/// clamped to 0..maxScore after every frame. A silent frame or one with a zero sample scores nothing.
template <typename Sample>
std::int32_t ScorePhases(PcmView<Sample> samples, const StereoLayout& layout, bool negateLeft,
                         std::int32_t score, std::int32_t maxScore) {
    ForEachFrame(samples, layout, negateLeft, [&score, maxScore](Sample left, Sample right) {
        if (!IsSilent(left, right)) {
            score += IsOpposed(left, right) ? 1 : 0;
            score -= IsInPhase(left, right) ? 1 : 0;
            score = std::clamp(score, 0, maxScore);
        }
    });
    return score;
}

}  // namespace audio_filter::internal
