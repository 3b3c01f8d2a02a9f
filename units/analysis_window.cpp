#include "units/analysis_window.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace audio_filter::internal {

namespace {

/// The suppressor's table has eight decimals.
float RampWeight(std::size_t position, std::size_t length) {
    const double sine = std::sin(std::numbers::pi / 2.0 * static_cast<double>(position) /
                                 static_cast<double>(length));
    return static_cast<float>(std::round(sine * 1e8) / 1e8);
}

}  // namespace

void AnalysisWindow::Reset(int sampleRate) {
    mOld = sampleRate == 8000 ? 48 : 96;
    mNew = sampleRate == 8000 ? 80 : 160;
    mBuffer.fill(0.0F);
    mWeights.fill(1.0F);
    mWeights[0] = 0.0F;
    for (std::size_t i = 1; i < mOld; ++i) {
        mWeights[i] = RampWeight(i, mOld);
        mWeights[mOld + mNew - i] = mWeights[i];
    }
}

bool AnalysisWindow::IsSilentAfter(const float* lowBand) {
    std::copy_n(mBuffer.begin() + static_cast<std::ptrdiff_t>(mNew), mOld, mBuffer.begin());
    std::copy_n(lowBand, mNew, mBuffer.begin() + static_cast<std::ptrdiff_t>(mOld));
    // The sum is zero exactly when every square is zero or underflows (below about 1e-45).
    for (std::size_t i = 0; i < mOld + mNew; ++i) {
        const float weighted = mWeights[i] * mBuffer[i];
        if (weighted * weighted != 0.0F) {
            return false;
        }
    }
    return true;
}

}  // namespace audio_filter::internal
