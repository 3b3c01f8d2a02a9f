#include "host/page/spectrum_analyzer.h"

#include <kiss_fftr.h>

#include <cmath>
#include <numbers>

SpectrumAnalyzer::SpectrumAnalyzer(std::size_t frames)
    : mState(kiss_fftr_alloc(static_cast<int>(frames), 0, nullptr, nullptr)),
      mWindow(frames),
      mWindowed(frames),
      mBins(frames / 2 + 1) {
    double squares = 0.0;
    std::vector<double> hann(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        const double turn = (static_cast<double>(i) + 0.5) / static_cast<double>(frames);
        hann[i] = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * turn);
        squares += hann[i] * hann[i];
    }
    // Parseval, with each bin but the outermost standing for a pair.
    const double scale = std::sqrt(2.0 / (squares * static_cast<double>(frames)));
    for (std::size_t i = 0; i < frames; ++i) {
        mWindow[i] = static_cast<float>(hann[i] * scale);
    }
}

SpectrumAnalyzer::~SpectrumAnalyzer() = default;

void SpectrumAnalyzer::Release::operator()(kiss_fftr_state* state) const {
    kiss_fftr_free(state);
}

const std::vector<std::complex<float>>& SpectrumAnalyzer::Analyze(const float* samples) {
    for (std::size_t i = 0; i < mWindow.size(); ++i) {
        mWindowed[i] = samples[i] * mWindow[i];
    }
    static_assert(sizeof(kiss_fft_cpx) == sizeof(std::complex<float>));
    kiss_fftr(mState.get(), mWindowed.data(), reinterpret_cast<kiss_fft_cpx*>(mBins.data()));
    mBins.front() *= std::numbers::sqrt2_v<float> / 2.0F;
    mBins.back() *= std::numbers::sqrt2_v<float> / 2.0F;
    return mBins;
}
