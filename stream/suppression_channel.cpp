#include "stream/suppression_channel.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace audio_filter::internal {

namespace {

/// The rate for which the suppressor is made; it runs at any, as if at this one.
constexpr int kNominalRate = 32000;

/// Keeps the resamplers and the energies of a block finite.
float Bounded(float sample) {
    constexpr float kLoudest = 1e6F;
    return std::isfinite(sample) ? std::clamp(sample, -kLoudest, kLoudest) : 0.0F;
}

/// The energy of the third differences of a block: nearly all of it is from the upper half of the band.
float UpperBandEnergy(std::span<const float> block) {
    float energy = 0.0F;
    for (std::size_t i = 3; i < block.size(); ++i) {
        const float difference =
            block[i] - 3.0F * block[i - 1] + 3.0F * block[i - 2] - block[i - 3];
        energy += difference * difference;
    }
    return energy;
}

}  // namespace

SuppressionChannel::SuppressionChannel(RatePlan plan, int level, std::uint32_t seed)
    : mPlan(plan), mToS16(seed), mAligned(kSuppressorDelay, kBlockSamples) {
    if (plan.Resamples()) {
        mToSuppressor.emplace(plan.down, plan.up);
        mFromSuppressor.emplace(plan.up, plan.down);
    }
    if (!mSuppressor.Init(kNominalRate, SAMPLE_FMT_S16, level)) {
        throw std::bad_alloc();
    }
    mGains.fill(1.0F);
}

void SuppressionChannel::Process(std::span<const float> in, std::span<const float> delayed,
                                 std::span<float> out) {
    Block block;
    Block suppressed;
    if (!mPlan.Resamples()) {
        std::copy(in.begin(), in.end(), block.begin());
        Suppress(block, suppressed);
        std::copy(suppressed.begin(), suppressed.end(), out.begin());
        return;
    }
    std::array<float, kMaxBlockFrames> bounded;
    std::transform(in.begin(), in.end(), bounded.begin(), Bounded);
    mToSuppressor->Process(std::span(bounded).first(in.size()), block);
    Suppress(block, suppressed);
    if (mPlan.down > 1) {
        SubtractScaled(block, suppressed);
    }
    mFromSuppressor->Process(suppressed, out);
    if (mPlan.down > 1) {
        AddBandAbove(delayed, out);
    }
}

void SuppressionChannel::Suppress(const Block& in, Block& out) {
    std::array<short, kBlockSamples> samples;
    std::array<short, kBlockSamples> suppressed;
    mToS16.Convert(in, samples);
    mSuppressor.Process(reinterpret_cast<const char*>(samples.data()),
                        reinterpret_cast<char*>(suppressed.data()));
    std::transform(suppressed.begin(), suppressed.end(), out.begin(),
                   [](short sample) { return static_cast<float>(sample) / 32768.0F; });
}

/// Subtracts the input at the gain of the upper half of the suppressor's band. AddBandAbove adds the whole
/// input at this gain; what remains of it is the band above the suppressor's.
void SuppressionChannel::SubtractScaled(const Block& in, Block& suppressed) {
    Block aligned;
    mAligned.Process(in, aligned);
    constexpr float kInaudible = 1e-9F;
    const float ratio =
        (UpperBandEnergy(suppressed) + kInaudible) / (UpperBandEnergy(aligned) + kInaudible);
    std::copy(mGains.end() - kGainDelay, mGains.end(), mGains.begin());
    const float before = mGains[kGainDelay - 1];
    const float now = mKeepsBandAbove ? std::min(std::sqrt(ratio), 1.0F) : 0.0F;
    for (std::size_t i = 0; i < kBlockSamples; ++i) {
        const float gain =
            before + (now - before) * static_cast<float>(i + 1) / static_cast<float>(kBlockSamples);
        mGains[kGainDelay + i] = gain;
        suppressed[i] -= gain * aligned[i];
    }
}

void SuppressionChannel::AddBandAbove(std::span<const float> delayed, std::span<float> out) const {
    for (std::size_t i = 0; i < out.size(); ++i) {
        out[i] += mGains[i / static_cast<std::size_t>(mPlan.down)] * Bounded(delayed[i]);
    }
}

void SuppressionChannel::SetLevel(int level) {
    mSuppressor.setLevel(level);
}

void SuppressionChannel::Reset() {
    if (mPlan.Resamples()) {
        mToSuppressor->Reset();
        mFromSuppressor->Reset();
    }
    mSuppressor.Reset();
    mAligned.Reset();
    mGains.fill(1.0F);
}

std::size_t SuppressionChannel::Delay() const {
    const auto up = static_cast<std::size_t>(mPlan.up);
    const auto down = static_cast<std::size_t>(mPlan.down);
    std::size_t delay = kSuppressorDelay * down / up;
    if (mPlan.Resamples()) {
        delay += static_cast<std::size_t>(mToSuppressor->Delay()) +
                 static_cast<std::size_t>(mFromSuppressor->Delay()) * down / up;
    }
    return delay;
}

}  // namespace audio_filter::internal
