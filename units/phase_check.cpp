#include "units/phase_check.h"

#include <algorithm>
#include <type_traits>

#include "common/result_code.h"
#include "units/phase_statistics.h"

using namespace audio_filter::internal;

namespace {

constexpr int kMinSampleRate = 8000;
constexpr int kMaxSampleRate = 48000;

StereoLayout LayoutOf(int count, bool planar) {
    return {static_cast<std::size_t>(count) / 2, planar};
}

template <typename Sample>
PcmView<Sample> ViewOf(Sample* samples, const StereoLayout& layout) {
    return {samples, 2 * layout.frames};
}

}  // namespace

int PhaseCheck::Init(int sampleRate, bool planar) {
    mInited = false;
    if (sampleRate < kMinSampleRate || sampleRate > kMaxSampleRate) {
        return RESULT_FAILURE;
    }
    *this = PhaseCheck();
    mSampleRate = sampleRate;
    mMaxScore = sampleRate * 10;
    mPlanar = planar;
    mInited = true;
    return RESULT_OK;
}

bool PhaseCheck::IsInited() {
    return mInited;
}

bool PhaseCheck::Clear() {
    mInvert = false;
    mScore2 = 0;
    ResetCounters();
    mInited = false;
    return true;
}

int PhaseCheck::Check(short* samples, int count) {
    return RunRatioDetector(samples, count);
}

int PhaseCheck::Check(float* samples, int count) {
    return RunRatioDetector(samples, count);
}

int PhaseCheck::Check2(short* samples, int count) {
    return RunScoreDetector(samples, count);
}

int PhaseCheck::Check2(float* samples, int count) {
    return RunScoreDetector(samples, count);
}

float PhaseCheck::GetInPhaseRatio() {
    return RatioOfTotal(mInPhase);
}

float PhaseCheck::GetOpposedPhaseRatio() {
    return RatioOfTotal(mOpposed);
}

float PhaseCheck::GetSilenceRatio() {
    return RatioOfTotal(mSilence);
}

template <typename Sample>
int PhaseCheck::RunRatioDetector(Sample* samples, int count) {
    if (Refuses(samples, count)) {
        return RESULT_FAILURE;
    }
    if (count < 0) {
        return RESULT_OK;
    }
    const bool correcting = static_cast<double>(mOpposedShare) > 0.7;
    const StereoLayout layout = LayoutOf(count, mPlanar);
    const PhaseCounts counts = CountPhases(ViewOf(samples, layout), layout, correcting);
    mTotal += layout.frames;
    mInPhase += static_cast<std::uint64_t>(counts.inPhase);
    mOpposed += static_cast<std::uint64_t>(counts.opposed);
    mSilence += static_cast<std::uint64_t>(counts.silent);
    const int leftOpposed = correcting ? counts.inPhase : counts.opposed;
    const int leftInPhase = correcting ? counts.opposed : counts.inPhase;
    mScore += leftOpposed - leftInPhase;

    RenewRates<Sample>();
    if (mScore > mSampleRate * 20) {
        ResetCounters();
        mScore = 0;
    }
    mScore = std::max(mScore, 0);
    return RESULT_OK;
}

/// The sample formats deliberately differ: the 16-bit version updates all rates and decides by them,
/// the float version decides by the counts and leaves the other rates unchanged.
template <typename Sample>
void PhaseCheck::RenewRates() {
    const std::uint64_t audible = mInPhase + mOpposed;
    float share = static_cast<float>(mOpposed) / static_cast<float>(audible);
    if constexpr (std::is_same_v<Sample, short>) {
        const auto total = static_cast<float>(mTotal);
        mSilenceRate = static_cast<float>(mSilence) / total;
        mInPhaseRate = static_cast<float>(mInPhase) / total;
        mOpposedRate = static_cast<float>(mOpposed) / total;
        share = mOpposedRate / (mOpposedRate + mInPhaseRate);
    }
    const bool enough = static_cast<double>(audible) > mSampleRate * 0.5;
    mOpposedShare = enough ? share : 0.0F;
}

template <typename Sample>
int PhaseCheck::RunScoreDetector(Sample* samples, int count) {
    if (Refuses(samples, count)) {
        return RESULT_FAILURE;
    }
    if (count < 0) {
        return RESULT_OK;
    }
    const int threshold = mInvert ? mSampleRate * 3 : mSampleRate * 6;
    mInvert = mScore2 > threshold;
    const StereoLayout layout = LayoutOf(count, mPlanar);
    mScore2 = ScorePhases(ViewOf(samples, layout), layout, mInvert, mScore2, mMaxScore);
    return RESULT_OK;
}

bool PhaseCheck::Refuses(const void* samples, int count) const {
    return !mInited || count % 2 != 0 || (samples == nullptr && count > 0);
}

void PhaseCheck::ResetCounters() {
    mTotal = 0;
    mInPhase = 0;
    mOpposed = 0;
    mSilence = 0;
}

float PhaseCheck::RatioOfTotal(std::uint64_t frames) const {
    return mTotal == 0 ? 0.0F : static_cast<float>(frames) / static_cast<float>(mTotal);
}
