#include "host/page/excerpts.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/level_meter.h"

namespace {

constexpr std::size_t kHeardChannels = 2;
constexpr double kMostDb = 30.0;      ///< what counts for the score
constexpr double kInaudible = -80.0;  ///< dBFS

short ToShort(float sample) {
    const float scaled = std::nearbyint(sample * 32768.0F);
    return std::isnan(scaled) ? short{0}
                              : static_cast<short>(std::clamp(scaled, -32768.0F, 32767.0F));
}

/// Mean squares of windows of 50 ms.
std::vector<double> Powers(const std::vector<short>& samples, std::size_t windowSamples) {
    std::vector<double> powers;
    for (std::size_t at = 0; at + windowSamples <= samples.size(); at += windowSamples) {
        double sum = 0.0;
        for (std::size_t i = at; i < at + windowSamples; ++i) {
            const double sample = samples[i] / 32768.0;
            sum += sample * sample;
        }
        powers.push_back(sum / static_cast<double>(windowSamples));
    }
    return powers;
}

/// Bounded difference in dB; 0 where nothing is audible.
double Fall(double from, double to) {
    return from < kInaudible ? 0.0 : std::clamp(from - to, 0.0, kMostDb);
}

double Score(const Excerpt& piece, std::size_t windowSamples) {
    const std::vector<double> before = Powers(piece.before, windowSamples);
    if (before.empty()) {
        return 0.0;
    }
    const WindowLevels levels = CompareWindows(before, Powers(piece.after, windowSamples));
    return Fall(levels.speechBefore, levels.noiseFloorBefore) +
           Fall(levels.noiseFloorBefore, levels.noiseFloorAfter);
}

}  // namespace

Excerpts::Excerpts(int sampleRate, int channels)
    : mSampleRate(sampleRate),
      mSourceChannels(static_cast<std::size_t>(channels)),
      mChannels(mSourceChannels > kHeardChannels ? 1 : mSourceChannels),
      mPieceSamples(static_cast<std::size_t>(kPieceSeconds * sampleRate) * mChannels) {}

void Excerpts::Add(const std::vector<float>& before, const std::vector<float>& after) {
    for (std::size_t i = 0; i < before.size(); i += mSourceChannels) {
        AddFrame(before.data() + i, mCurrent.before);
        AddFrame(after.data() + i, mCurrent.after);
        if (mCurrent.before.size() == mPieceSamples) {
            ClosePiece();
        }
    }
}

void Excerpts::Finish() {
    if (!mCurrent.before.empty()) {
        ClosePiece();
    }
}

void Excerpts::AddFrame(const float* frame, std::vector<short>& samples) const {
    if (mChannels == mSourceChannels) {
        for (std::size_t channel = 0; channel < mChannels; ++channel) {
            samples.push_back(ToShort(frame[channel]));
        }
        return;
    }
    float sum = 0.0F;
    for (std::size_t channel = 0; channel < mSourceChannels; ++channel) {
        sum += frame[channel];
    }
    samples.push_back(ToShort(sum / static_cast<float>(mSourceChannels)));
}

void Excerpts::ClosePiece() {
    const std::size_t samples = mCurrent.before.size();
    mCurrent.start = static_cast<double>(mFrames) / mSampleRate;
    mCurrent.score = Score(mCurrent, static_cast<std::size_t>(mSampleRate) / 20 * mChannels) *
                     static_cast<double>(samples) / static_cast<double>(mPieceSamples);
    mFrames += samples / mChannels;
    mKept.push_back(std::exchange(mCurrent, {}));
    if (mKept.size() > kPieces) {
        mKept.erase(
            std::min_element(mKept.begin(), mKept.end(),
                             [](const Excerpt& a, const Excerpt& b) { return a.score < b.score; }));
    }
}
