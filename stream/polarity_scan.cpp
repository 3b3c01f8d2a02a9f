#include "stream/polarity_scan.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "stream/polarity.h"
#include "stream/rate_plan.h"

namespace audio_filter {

using namespace internal;

namespace {

/// The opposed frames of a block less those in phase; silent frames, as PhaseCheck defines them, count
/// as neither.
int OpposedScore(std::span<const float> left, std::span<const float> right) {
    constexpr float kSilence = 491.0F / 32768.0F;
    int score = 0;
    for (std::size_t i = 0; i < left.size(); ++i) {
        const bool audible = std::max(std::abs(left[i]), std::abs(right[i])) > kSilence;
        score += !audible ? 0 : left[i] * right[i] > 0.0F ? -1 : 1;
    }
    return score;
}

}  // namespace

class PolarityScan::Impl {
public:
    explicit Impl(int sampleRate)
        : mPlan(RatePlan::For(sampleRate)),
          mPolarity(sampleRate, mPlan, 1),
          mLeft(mPlan.BlockFrames()),
          mRight(mPlan.BlockFrames()) {}

    void Add(const float* samples, std::size_t frames) {
        for (std::size_t done = 0; done < frames;) {
            const std::size_t count = std::min(mLeft.size() - mGathered, frames - done);
            for (std::size_t i = 0; i < count; ++i) {
                mLeft[mGathered + i] = samples[2 * (done + i)];
                mRight[mGathered + i] = samples[2 * (done + i) + 1];
            }
            done += count;
            mGathered += count;
            if (mGathered == mLeft.size()) {
                AddBlock();
                mGathered = 0;
            }
        }
    }

    std::vector<Stretch> Finish() {
        if (mReversed) {
            mStretches.push_back({mBegin, mFrames + static_cast<std::int64_t>(mGathered)});
        }
        return std::move(mStretches);
    }

private:
    /// Remembers where the latest run of blocks began in which one phase prevails: a cumulative score that
    /// never falls below 0 has been above 0 since then.
    class Run {
    public:
        void Add(int score, std::int64_t blockEnd) {
            mScore = std::max<std::int64_t>(0, mScore + score);
            if (mScore == 0 && score < 0) {
                mBegin = blockEnd;
            }
        }
        std::int64_t Begin() const { return mBegin; }

    private:
        std::int64_t mScore = 0;
        std::int64_t mBegin = 0;
    };

    void AddBlock() {
        mFrames += static_cast<std::int64_t>(mLeft.size());
        mPolarity.Check(mLeft, mRight);
        const int score = OpposedScore(mLeft, mRight);
        mOpposed.Add(score, mFrames);
        mInPhase.Add(-score, mFrames);
        if (mPolarity.Detected() == mReversed) {
            return;
        }
        mReversed = mPolarity.Detected();
        if (mReversed) {
            const std::int64_t end = mStretches.empty() ? 0 : mStretches.back().end;
            mBegin = std::max(mOpposed.Begin(), end);
        } else {
            mStretches.push_back({mBegin, std::max(mInPhase.Begin(), mBegin)});
        }
    }

    RatePlan mPlan;
    Polarity mPolarity;
    std::vector<float> mLeft;
    std::vector<float> mRight;
    std::size_t mGathered = 0;
    std::int64_t mFrames = 0;  ///< in whole blocks
    Run mOpposed;
    Run mInPhase;
    bool mReversed = false;
    std::int64_t mBegin = 0;  ///< of the current stretch
    std::vector<Stretch> mStretches;
};

PolarityScan::PolarityScan(int sampleRate) : mImpl(std::make_unique<Impl>(sampleRate)) {}

PolarityScan::~PolarityScan() = default;

void PolarityScan::Add(const float* samples, std::size_t frames) {
    mImpl->Add(samples, frames);
}

std::vector<Stretch> PolarityScan::Finish() {
    return mImpl->Finish();
}

}  // namespace audio_filter
