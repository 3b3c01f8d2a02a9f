#pragma once

#include <cmath>
#include <random>
#include <vector>

/// Synthetic noisy speech, -1..1: steady noise and a few bursts per second of a tone with overtones.
inline std::vector<float> NoisySpeech(std::mt19937& random, std::size_t samples, double rate) {
    std::uniform_real_distribution<double> noise(-0.02, 0.02);
    std::vector<float> signal(samples);
    for (std::size_t i = 0; i < samples; ++i) {
        const double t = static_cast<double>(i) / rate;
        const double burst = std::max(0.0, std::sin(2.0 * 3.14159265 * 1.5 * t));
        // sin((n + 1) x) = 2 cos(x) sin(n x) - sin((n - 1) x): two calls for 12 overtones
        const double x = 2.0 * 3.14159265 * 140.0 * t;
        const double twice = 2.0 * std::cos(x);
        double before = 0.0;
        double overtone = std::sin(x);
        double voice = 0.0;
        for (int n = 1; n <= 12; ++n) {
            voice += overtone / n;
            const double next = twice * overtone - before;
            before = overtone;
            overtone = next;
        }
        signal[i] = static_cast<float>(0.3 * burst * voice + noise(random));
    }
    return signal;
}

template <typename Sample>
std::vector<Sample> As(const std::vector<float>& signal) {
    std::vector<Sample> samples;
    samples.reserve(signal.size());
    for (const float value : signal) {
        if constexpr (std::is_same_v<Sample, float>) {
            samples.push_back(value);
        } else {
            samples.push_back(static_cast<Sample>(std::lround(value * 32767.0F)));
        }
    }
    return samples;
}
