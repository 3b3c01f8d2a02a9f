#include "classifier/features.h"

#include <algorithm>
#include <cmath>

namespace {

double Square(float value) {
    return static_cast<double>(value) * static_cast<double>(value);
}

/// A bin number times a factor, the fraction dropped.
std::size_t Scaled(std::size_t bin, double factor) {
    return static_cast<std::size_t>(static_cast<double>(bin) * factor);
}

}  // namespace

double FrameEnergy(std::span<const float> frame) {
    double energy = 0.0;
    for (const float sample : frame) {
        energy += Square(sample);
    }
    return energy;
}

float LowEnergyRate(std::span<const double> energies, float ratio) {
    const auto frames = static_cast<double>(energies.size());
    double sum = 0.0;
    for (const double energy : energies) {
        sum += energy;
    }
    const double limit = static_cast<double>(ratio) * (sum / frames);
    const auto low = std::count_if(energies.begin(), energies.end(),
                                   [limit](double energy) { return energy < limit; });
    return static_cast<float>(static_cast<double>(low) / frames);
}

std::array<float, 3> SubBandRatios(std::span<const float> magnitudes, std::size_t bandStart) {
    const auto power = [&](std::size_t begin, std::size_t end) {
        double sum = 0.0;
        for (std::size_t k = begin; k < std::min(end, magnitudes.size()); ++k) {
            sum += Square(magnitudes[k]);
        }
        return sum;
    };
    const double total = power(bandStart, 2 * bandStart);
    const double band1 = power(bandStart, Scaled(bandStart, 1.125));
    const double band2 = power(Scaled(bandStart, 1.25), Scaled(bandStart, 1.5));
    const double band3 = power(Scaled(bandStart, 1.5), 2 * bandStart);
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
