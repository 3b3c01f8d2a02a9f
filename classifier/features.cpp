#include "classifier/features.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace audio_filter::internal {

namespace {

double Square(float value) {
    return static_cast<double>(value) * static_cast<double>(value);
}

/// A bin number times a factor, truncated.
std::size_t Scaled(std::size_t bin, double factor) {
    return static_cast<std::size_t>(static_cast<double>(bin) * factor);
}

/// The additions of a sum in fixed order depend on each other; several sums at a time hide their
/// latency.
constexpr std::size_t kSideBySide = 8;

/// The energies of kSideBySide whole segments.
void AddSegments(std::span<const float> signal, std::size_t hop, std::span<const float> window,
                 std::span<double, kSideBySide> energies) {
    constexpr std::size_t kAtOnce = 64;
    double squares[kSideBySide][kAtOnce];
    double sums[kSideBySide] = {};
    for (std::size_t i = 0; i < window.size(); i += kAtOnce) {
        const std::size_t count = std::min(window.size() - i, kAtOnce);
        for (std::size_t f = 0; f < kSideBySide; ++f) {
            const float* samples = &signal[f * hop + i];
            for (std::size_t k = 0; k < count; ++k) {
                squares[f][k] = Square(samples[k] * window[i + k]);
            }
        }
        for (std::size_t k = 0; k < count; ++k) {
            for (std::size_t f = 0; f < kSideBySide; ++f) {
                sums[f] += squares[f][k];
            }
        }
    }
    std::copy(std::begin(sums), std::end(sums), energies.begin());
}

}  // namespace

double SegmentEnergy(std::span<const float> segment) {
    double energy = 0.0;
    for (const float sample : segment) {
        energy += Square(sample);
    }
    return energy;
}

void SegmentEnergies(std::span<const float> signal, std::size_t hop, std::span<const float> window,
                     std::span<double> energies) {
    std::size_t j = 0;
    for (; j + kSideBySide <= energies.size() &&
           (j + kSideBySide - 1) * hop + window.size() <= signal.size();
         j += kSideBySide) {
        AddSegments(signal.subspan(j * hop), hop, window, energies.subspan(j).first<kSideBySide>());
    }
    for (; j < energies.size(); ++j) {
        const std::size_t start = std::min(j * hop, signal.size());
        const std::size_t inside = std::min(signal.size() - start, window.size());
        double energy = 0.0;
        for (std::size_t i = 0; i < inside; ++i) {
            energy += Square(signal[start + i] * window[i]);
        }
        energies[j] = energy;
    }
}

float LowEnergyRate(std::span<const double> energies, float ratio) {
    const auto segments = static_cast<double>(energies.size());
    double sum = 0.0;
    for (const double energy : energies) {
        sum += energy;
    }
    const double limit = static_cast<double>(ratio) * (sum / segments);
    const auto low = std::count_if(energies.begin(), energies.end(),
                                   [limit](double energy) { return energy < limit; });
    return static_cast<float>(static_cast<double>(low) / segments);
}

std::array<float, 3> SubBandRatios(std::span<const float> magnitudes, std::size_t bandStart) {
    return UpperBandRatios(magnitudes.subspan(std::min(bandStart, magnitudes.size())), bandStart);
}

std::array<float, 3> UpperBandRatios(std::span<const float> band, std::size_t bandStart) {
    double total = 0.0;
    std::size_t bin = bandStart;
    // Adds the bins below `end`, in order, to the total and returns their sum.
    const auto power = [&](std::size_t end) {
        double sum = 0.0;
        for (; bin < std::min(end, bandStart + band.size()); ++bin) {
            const double square = Square(band[bin - bandStart]);
            total += square;
            sum += square;
        }
        return sum;
    };
    const double band1 = power(Scaled(bandStart, 1.125));
    power(Scaled(bandStart, 1.25));
    const double band2 = power(Scaled(bandStart, 1.5));
    const double band3 = power(2 * bandStart);
    return {static_cast<float>(band1 / total), static_cast<float>(band2 / total),
            static_cast<float>(band3 / total)};
}

float Distance(std::span<const float> a, std::span<const float> b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum += Square(a[i] - b[i]);
    }
    return static_cast<float>(std::sqrt(sum));
}

bool IsNearestToCentre0(float value, std::span<const float> centres) {
    float nearest = 1.0F;
    for (const float& centre : centres) {
        nearest = std::min(nearest, Distance({&value, 1}, {&centre, 1}));
    }
    return nearest == Distance({&value, 1}, centres.first(1));
}

bool IsSpeechByLowEnergy(std::span<const double> energies, const float* thresholds,
                         const float (*centres)[4]) {
    for (std::size_t i = 0; i < 4; ++i) {
        if (IsNearestToCentre0(LowEnergyRate(energies, thresholds[i]), centres[i])) {
            return true;
        }
    }
    return false;
}

}  // namespace audio_filter::internal
