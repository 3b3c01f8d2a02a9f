#include "stream/polarity.h"

#include <array>

#include "stream/to_s16.h"

namespace audio_filter::internal {

Polarity::Polarity(int sampleRate, RatePlan plan, std::size_t fadeFrames)
    : mStep(static_cast<std::size_t>(plan.down)),
      mFrames(2 * plan.BlockFrames()),
      mFade(fadeFrames) {
    mCheck.Init(sampleRate / plan.down, false);
}

void Polarity::Check(std::span<const float> left, std::span<const float> right) {
    const std::size_t frames = left.size() / mStep;
    for (std::size_t i = 0; i < frames; ++i) {
        mFrames[2 * i] = NearestS16(left[i * mStep]);
        mFrames[2 * i + 1] = NearestS16(right[i * mStep]);
    }
    mCheck.Check(mFrames.data(), static_cast<int>(2 * frames));
    // The unit reports its decision by the sign of the left samples alone. 0 and -32768 show none.
    for (std::size_t i = 0; i < frames; ++i) {
        const short before = NearestS16(left[i * mStep]);
        if (before != 0 && before != -32768) {
            mDetected = (before < 0) != (mFrames[2 * i] < 0);
            return;
        }
    }
}

void Polarity::Apply(std::span<float> left, bool negate) {
    mNegates = negate;
    if (mFade.IsAt0() && !negate) {
        return;  // every bit as it is
    }
    std::array<float, kMaxBlockFrames> fade;
    const std::span<float> weights = std::span(fade).first(left.size());
    mFade.Advance(negate, weights);
    for (std::size_t i = 0; i < left.size(); ++i) {
        left[i] *= 1.0F - 2.0F * weights[i];
    }
}

}  // namespace audio_filter::internal
