#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "stream/fade.h"
#include "stream/rate_plan.h"
#include "units/phase_check.h"

namespace audio_filter::internal {

/// Detects and corrects a reversed channel of one stereo source. The verdict is that of PhaseCheck on 16-bit
/// samples, at rates above 48000 Hz on every second to fourth frame.
class Polarity {
public:
    /// [setup]
    Polarity(int sampleRate, RatePlan plan, std::size_t fadeFrames);

    /// [audio] Counts a processing block and takes the verdict.
    void Check(std::span<const float> left, std::span<const float> right);

    /// [audio] Negates the left channel or not; a change crossfades.
    void Apply(std::span<float> left, bool negate);

    /// [audio] The verdict: the left channel is reversed.
    bool Detected() const { return mDetected; }

    /// [audio] Whether the last Apply negated the channel, or began to.
    bool Negates() const { return mNegates; }

    /// [audio] Negates or not without a crossfade.
    void Start(bool negate) { mFade.Start(mNegates = negate); }

private:
    std::size_t mStep;
    PhaseCheck mCheck;
    std::vector<short> mFrames;  ///< interleaved
    bool mDetected = false;
    bool mNegates = false;
    Fade mFade;  ///< 1: negated
};

}  // namespace audio_filter::internal
