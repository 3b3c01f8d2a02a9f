#include "units/float_bands.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "units/suppressor_block.h"

namespace audio_filter::internal {

namespace {

using Branch = std::array<double, kBandSamples>;
using Coefficients = std::array<double, 3>;

/// The packaged filters' 16-bit coefficients divided by 65536; these decimals are authoritative.
constexpr Coefficients kSetA = {0.0979309007525444, 0.5643004775047302, 0.8737339973449707};
constexpr Coefficients kSetB = {0.3255156874656677, 0.748626708984375, 0.9614560008049011};

constexpr double kFloatBound = 3.4e38;

/// Three first-order all-pass sections in series, in place.
void AllPass(Branch& samples, const Coefficients& coefficients, double* memory) {
    for (const double coefficient : coefficients) {
        double previousIn = memory[0];
        double previousOut = memory[1];
        for (double& sample : samples) {
            const double in = sample;
            sample = (in - previousOut) * coefficient + previousIn;
            previousIn = in;
            previousOut = sample;
        }
        memory[0] = previousIn;
        memory[1] = previousOut;
        memory += 2;
    }
}

float ToFloat(double sample) {
    return static_cast<float>(std::clamp(sample, -kFloatBound, kFloatBound));
}

double FiniteOrZero(float sample) {
    return std::isfinite(sample) ? sample : 0.0;
}

}  // namespace

void SplitBands(const float* samples, float* low, float* high, double* memory1, double* memory2) {
    Branch odd;
    Branch even;
    for (std::size_t i = 0; i < kBandSamples; ++i) {
        odd[i] = FiniteOrZero(samples[2 * i + 1]);
        even[i] = FiniteOrZero(samples[2 * i]);
    }
    AllPass(odd, kSetA, memory1);
    AllPass(even, kSetB, memory2);
    for (std::size_t i = 0; i < kBandSamples; ++i) {
        low[i] = ToFloat((odd[i] + even[i]) * 0.5);
        high[i] = ToFloat((odd[i] - even[i]) * 0.5);
    }
}

void MergeBands(const float* low, const float* high, float* samples, double* memory1,
                double* memory2) {
    Branch sum;
    Branch difference;
    for (std::size_t i = 0; i < kBandSamples; ++i) {
        sum[i] = static_cast<double>(low[i]) + static_cast<double>(high[i]);
        difference[i] = static_cast<double>(low[i]) - static_cast<double>(high[i]);
    }
    AllPass(sum, kSetB, memory1);
    AllPass(difference, kSetA, memory2);
    for (std::size_t i = 0; i < kBandSamples; ++i) {
        samples[2 * i] = ToFloat(difference[i]);
        samples[2 * i + 1] = ToFloat(sum[i]);
    }
}

}  // namespace audio_filter::internal
