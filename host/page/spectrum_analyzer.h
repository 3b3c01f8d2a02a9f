#pragma once

#include <complex>
#include <cstddef>
#include <memory>
#include <vector>

struct kiss_fftr_state;

/// Windowed spectra (Hann) of a real signal.
class SpectrumAnalyzer {
public:
    /// @param frames length of the window, a multiple of 2
    explicit SpectrumAnalyzer(std::size_t frames);
    ~SpectrumAnalyzer();

    std::size_t Frames() const { return mWindow.size(); }

    /// The bins from 0 Hz to half the rate, scaled so that the squared magnitudes add up to the mean square of the
    /// windowed signal.
    /// @param samples Frames() samples
    const std::vector<std::complex<float>>& Analyze(const float* samples);

private:
    struct Release {
        void operator()(kiss_fftr_state* state) const;
    };

    std::unique_ptr<kiss_fftr_state, Release> mState;
    std::vector<float> mWindow;
    std::vector<float> mWindowed;
    std::vector<std::complex<float>> mBins;
};
