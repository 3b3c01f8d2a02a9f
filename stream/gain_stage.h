#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>

#include "stream/fade.h"
#include "stream/rate_plan.h"
#include "units/audio_gain.h"

namespace audio_filter::internal {

/// Applies the gain curve to one channel, in the sample format of the stream.
class GainStage {
public:
    /// @param s16 whether the samples are 16-bit values, full scale at 1
    /// @param fadeFrames of a crossfade
    GainStage(bool s16, std::size_t fadeFrames) : mS16(s16), mFade(fadeFrames) {
        mFade.Start(true);
    }

    /// [audio] Processes a block in place, up to kMaxBlockFrames samples. A change of the gain crossfades;
    /// one during a crossfade waits for its end.
    /// @param gain 0..1; none leaves the samples unchanged
    void Process(std::span<float> samples, std::optional<float> gain);

    /// [audio] Sets the gain without a crossfade.
    void Start(std::optional<float> gain) { mTo = gain; }

private:
    void Apply(std::span<const float> in, std::optional<float> gain, std::span<float> out);

    bool mS16;
    Fade mFade;
    std::optional<float> mFrom;
    std::optional<float> mTo;
    AudioGain mCurve;
    std::array<short, kMaxBlockFrames> mSamples = {};
};

}  // namespace audio_filter::internal
