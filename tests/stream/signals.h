#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

/// Test signals, full scale at 1.
namespace audio_filter {

inline std::vector<float> Tone(std::size_t frames, double frequency, double rate, double peak) {
    std::vector<float> tone(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        tone[i] = static_cast<float>(
            peak * std::sin(2.0 * std::numbers::pi * frequency * static_cast<double>(i) / rate));
    }
    return tone;
}

inline std::vector<float> WhiteNoise(std::size_t frames, float peak, std::uint32_t seed) {
    std::minstd_rand random(seed);
    std::uniform_real_distribution<float> uniform(-peak, peak);
    std::vector<float> noise(frames);
    for (float& sample : noise) {
        sample = uniform(random);
    }
    return noise;
}

/// White noise in bursts of 0.2 s that swell and fade, with pauses of `floor` times their peak.
inline std::vector<float> Bursts(std::size_t frames, double rate, float peak, float floor,
                                 std::uint32_t seed) {
    std::vector<float> bursts = WhiteNoise(frames, peak, seed);
    for (std::size_t i = 0; i < frames; ++i) {
        const double phase = std::sin(2.0 * std::numbers::pi * 2.5 * static_cast<double>(i) / rate);
        bursts[i] *= std::max(floor, static_cast<float>(phase));
    }
    return bursts;
}

/// Two syllables a second of a voice without noise: glottal pulses at 110 to 150 Hz, whose spectrum
/// falls by 6 dB per octave up to the end of the band.
inline std::vector<float> Voice(std::size_t frames, double rate) {
    std::vector<float> voice(frames);
    double phase = 0.0;
    double sample = 0.0;
    for (std::size_t i = 0; i < frames; ++i) {
        const double time = static_cast<double>(i) / rate;
        phase += (130.0 + 20.0 * std::sin(3.0 * time)) / rate;
        const bool pulse = phase >= 1.0;
        phase -= pulse ? 1.0 : 0.0;
        sample = sample * std::exp(-4000.0 / rate) + (pulse ? 0.5 : 0.0);
        const double syllable = std::sin(2.0 * std::numbers::pi * 2.0 * time);
        voice[i] = static_cast<float>(sample * std::max(0.0, syllable));
    }
    return voice;
}

/// The largest difference of neighbours.
inline float LargestStep(const std::vector<float>& signal, std::size_t begin, std::size_t end) {
    float largest = 0.0F;
    for (std::size_t i = begin + 1; i < end; ++i) {
        largest = std::max(largest, std::abs(signal[i] - signal[i - 1]));
    }
    return largest;
}

/// The most zeros in a row.
inline std::size_t LongestZeros(const std::vector<float>& signal) {
    std::size_t longest = 0;
    std::size_t zeros = 0;
    for (const float sample : signal) {
        zeros = sample == 0.0F ? zeros + 1 : 0;
        longest = std::max(longest, zeros);
    }
    return longest;
}

/// The delay at which `out` correlates most with `in`, of 0..`most`.
inline std::size_t CorrelatedLag(const std::vector<float>& in, const std::vector<float>& out,
                                 std::size_t most) {
    std::size_t best = 0;
    double highest = 0.0;
    for (std::size_t lag = 0; lag <= most; ++lag) {
        float sum = 0.0F;
        for (std::size_t i = 0; i + lag < out.size(); ++i) {
            sum += in[i] * out[i + lag];
        }
        if (static_cast<double>(sum) > highest) {
            highest = static_cast<double>(sum);
            best = lag;
        }
    }
    return best;
}

}  // namespace audio_filter
