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
        double voice = 0.0;
        for (int overtone = 1; overtone <= 12; ++overtone) {
            voice += std::sin(2.0 * 3.14159265 * 140.0 * overtone * t) / overtone;
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
