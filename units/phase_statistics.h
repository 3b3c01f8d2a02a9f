#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "common/pcm_view.h"

namespace audio_filter::internal {

/// The arithmetic of PhaseCheck: what one frame of a stereo signal says about the polarity of its
/// channels, and walks over all frames of a block.

/// Quiet enough to say nothing: within -491..491 in both channels.
constexpr bool IsSilent(short left, short right) {
    return left >= -491 && left <= 491 && right >= -491 && right <= 491;
}

/// Quiet enough to say nothing: strictly within -0.016..0.016 in both channels, in double
/// precision.
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

/// The sample with its polarity reversed. -32768 has no opposite and stays.
constexpr short Negated(short sample) {
    return static_cast<short>(-sample);
}
constexpr float Negated(float sample) {
    return -sample;
}

/// Where the frames of a block lie: L R L R..., or all left samples before all right ones.
struct StereoLayout {
    std::size_t frames;
    bool planar;

    std::size_t Left(std::size_t frame) const { return planar ? frame : 2 * frame; }
    std::size_t Right(std::size_t frame) const { return planar ? frame + frames : 2 * frame + 1; }
};

/// Frames of a block by what they say. One that is neither silent nor in phase counts as opposed,
/// even when it is loud in a single channel only.
struct PhaseCounts {
    std::int32_t inPhase = 0;
    std::int32_t opposed = 0;
    std::int32_t silent = 0;
};

/// Calls `visit(left, right)` with the values of every frame as they came in, having negated the
/// left sample in place if so wished.
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

/// Counts the frames of a block by their values as they came in, having negated the left samples in
/// place if so wished.
PhaseCounts CountPhases(PcmView<short> samples, const StereoLayout& layout, bool negateLeft);
PhaseCounts CountPhases(PcmView<float> samples, const StereoLayout& layout, bool negateLeft);

/// The score after a block: up one for a frame of opposite signs, down one for one of equal signs,
/// within 0..maxScore after every frame. A zero channel or a silent frame scores nothing.
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
