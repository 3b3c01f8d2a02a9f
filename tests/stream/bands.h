#pragma once

#include <kiss_fftr.h>

#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>
#include <vector>

namespace audio_filter {

/// The power of a signal by frequency, over Hann windows of 4096 samples.
class Bands {
public:
    Bands(const std::vector<float>& signal, std::size_t begin, double rate)
        : mRate(rate), mPower(kWindow / 2) {
        const std::unique_ptr<kiss_fftr_state, void (*)(void*)> transform(
            kiss_fftr_alloc(static_cast<int>(kWindow), 0, nullptr, nullptr),
            [](void* state) { kiss_fftr_free(state); });
        std::vector<float> hann(kWindow);
        for (std::size_t i = 0; i < kWindow; ++i) {
            const double turn = static_cast<double>(i) / kWindow;
            hann[i] = static_cast<float>(0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * turn));
        }
        std::vector<float> window(kWindow);
        std::vector<kiss_fft_cpx> bins(kWindow / 2 + 1);
        for (std::size_t at = begin; at + kWindow <= signal.size(); at += kWindow / 2) {
            for (std::size_t i = 0; i < kWindow; ++i) {
                window[i] = hann[i] * signal[at + i];
            }
            kiss_fftr(transform.get(), window.data(), bins.data());
            for (std::size_t k = 0; k < mPower.size(); ++k) {
                mPower[k] += static_cast<double>(bins[k].r * bins[k].r + bins[k].i * bins[k].i);
            }
        }
    }

    /// Between two frequencies, in dB.
    double Level(double low, double high) const {
        double power = 0.0;
        for (std::size_t k = 0; k < mPower.size(); ++k) {
            const double frequency = static_cast<double>(k) * mRate / kWindow;
            power += frequency >= low && frequency < high ? mPower[k] : 0.0;
        }
        return 10.0 * std::log10(power + 1e-30);
    }

private:
    static constexpr std::size_t kWindow = 4096;

    double mRate;
    std::vector<double> mPower;
};

}  // namespace audio_filter
