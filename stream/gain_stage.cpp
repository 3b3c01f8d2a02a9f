#include "stream/gain_stage.h"

#include <algorithm>

#include "stream/fade.h"
#include "stream/to_s16.h"

namespace audio_filter::internal {

void GainStage::Process(std::span<float> samples, std::optional<float> gain) {
    if (mFade.IsAt1() && gain != mTo) {
        mFrom = mTo;
        mTo = gain;
        mFade.Start(false);
    }
    if (mFade.IsAt1()) {
        Apply(samples, mTo, samples);
        return;
    }
    std::array<float, kMaxBlockFrames> before;
    std::array<float, kMaxBlockFrames> fade;
    const std::span<float> from = std::span(before).first(samples.size());
    const std::span<float> weights = std::span(fade).first(samples.size());
    Apply(samples, mFrom, from);
    Apply(samples, mTo, samples);
    mFade.Advance(true, weights);
    Crossfade(from, samples, weights, samples);
}

void GainStage::Apply(std::span<const float> in, std::optional<float> gain, std::span<float> out) {
    if (in.data() != out.data()) {
        std::copy(in.begin(), in.end(), out.begin());
    }
    if (!gain) {
        return;
    }
    mCurve.SetGain(*gain);
    if (mS16) {
        std::transform(out.begin(), out.end(), mSamples.begin(), NearestS16);
        mCurve.Process(reinterpret_cast<const char*>(mSamples.data()),
                       static_cast<int>(out.size() * sizeof(short)), SAMPLE_FMT_S16);
        std::transform(mSamples.begin(), mSamples.begin() + static_cast<std::ptrdiff_t>(out.size()),
                       out.begin(),
                       [](short sample) { return static_cast<float>(sample) / 32768.0F; });
        return;
    }
    mCurve.Process(reinterpret_cast<const char*>(out.data()), static_cast<int>(out.size_bytes()),
                   SAMPLE_FMT_FLT);
}

}  // namespace audio_filter::internal
