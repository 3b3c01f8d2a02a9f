#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>

#include "tests/plugins/obs/obs_host.h"

/// Test signals and their levels.
namespace audio_filter::obs {

inline constexpr std::uint64_t kSecond = 1'000'000'000;  ///< in ns

/// Noise, different in each channel. @param peak of the uniform distribution
inline Channels Noise(std::size_t channels, std::size_t frames, float peak = 0.1F) {
    std::mt19937 generator(7);
    std::uniform_real_distribution<float> sample(-peak, peak);
    Channels noise(channels, std::vector<float>(frames));
    for (std::vector<float>& channel : noise) {
        for (float& value : channel) {
            value = sample(generator);
        }
    }
    return noise;
}

/// The samples from `start` on, delayed: zeros first, the same length.
inline Channels Delayed(const Channels& in, std::size_t frames) {
    Channels delayed;
    for (const std::vector<float>& samples : in) {
        std::vector<float> channel(frames);
        channel.insert(channel.end(), samples.begin(),
                       samples.end() - static_cast<std::ptrdiff_t>(frames));
        delayed.push_back(channel);
    }
    return delayed;
}

/// RMS level in dBFS of the last half.
inline double Level(const std::vector<float>& samples) {
    const std::size_t half = samples.size() / 2;
    double sum = 0;
    for (std::size_t i = samples.size() - half; i < samples.size(); ++i) {
        sum += static_cast<double>(samples[i]) * samples[i];
    }
    return 10.0 * std::log10(sum / static_cast<double>(half) + 1e-20);
}

}  // namespace audio_filter::obs
