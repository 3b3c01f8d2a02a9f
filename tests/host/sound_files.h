#pragma once

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "support/signals.h"
#include "support/temp_dir.h"

/// The contents of a sound file.
template <typename Sample>
struct Sound {
    int sampleRate = 0;
    int channels = 0;
    int format = 0;  ///< libsndfile's
    std::vector<Sample> samples;
};

template <typename Sample>
void WriteSound(const std::string& path, const Sound<Sample>& sound) {
    SF_INFO info = {};
    info.samplerate = sound.sampleRate;
    info.channels = sound.channels;
    info.format = sound.format;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    const auto count = static_cast<sf_count_t>(sound.samples.size());
    if constexpr (std::is_same_v<Sample, short>) {
        ASSERT_EQ(sf_write_short(file, sound.samples.data(), count), count);
    } else {
        ASSERT_EQ(sf_write_float(file, sound.samples.data(), count), count);
    }
    ASSERT_EQ(sf_close(file), 0);
}

template <typename Sample>
Sound<Sample> ReadSound(const std::string& path) {
    SF_INFO info = {};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    EXPECT_NE(file, nullptr) << path << ": " << sf_strerror(nullptr);
    Sound<Sample> sound = {info.samplerate, info.channels, info.format, {}};
    const sf_count_t count = info.frames * info.channels;
    sound.samples.resize(static_cast<std::size_t>(count));
    if constexpr (std::is_same_v<Sample, short>) {
        EXPECT_EQ(sf_read_short(file, sound.samples.data(), count), count);
    } else {
        EXPECT_EQ(sf_read_float(file, sound.samples.data(), count), count);
    }
    sf_close(file);
    return sound;
}

/// A WAV header for 16-bit mono at 32000 Hz with any stated length.
inline std::string WavHeader(std::uint32_t audioBytes, std::uint32_t rate = 32000,
                             std::uint16_t channels = 1) {
    const auto number = [](std::uint64_t value, int bytes) {
        std::string text;
        for (int i = 0; i < bytes; ++i) {
            text += static_cast<char>(value >> (8 * i));
        }
        return text;
    };
    return "RIFF" + number(audioBytes + std::uint64_t{36}, 4) + "WAVEfmt " + number(16, 4) +
           number(1, 2) + number(channels, 2) + number(rate, 4) +
           number(std::uint64_t{rate} * channels * 2, 4) + number(channels * 2U, 2) +
           number(16, 2) + "data" + number(audioBytes, 4);
}

/// Hours of silence in a sparse file.
inline void WriteHoursOfSilence(const std::string& path) {
    constexpr std::uint32_t kBytes = 1'000'000'000;
    const std::string header = WavHeader(kBytes);
    WriteFile(path, header);
    std::filesystem::resize_file(path, header.size() + kBytes);
}

/// 16-bit samples in which no two neighbours are equal.
inline std::vector<short> Ramp(std::size_t count) {
    std::vector<short> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<short>(static_cast<int>(i * 7 % 60000) - 30000);
    }
    return samples;
}

/// Bursts of low-passed noise: speech-like, and uncorrelated with itself at any shift.
inline std::vector<float> Bursts(std::size_t frames, int sampleRate) {
    std::mt19937 random(7);
    std::normal_distribution<double> gauss(0.0, 1.0);
    std::vector<float> signal(frames);
    double low = 0.0;
    for (std::size_t i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / sampleRate;
        const double smoothing = std::exp(-6.28 * 1500.0 / sampleRate);
        low = smoothing * low + (1.0 - smoothing) * gauss(random);
        const double burst = std::fmod(t, 0.5) > 0.25 ? 1.0 : 0.0;
        signal[i] = static_cast<float>(0.5 * burst * low + 0.0005 * gauss(random));
    }
    return signal;
}

/// The lag of `late` behind `early` in frames, within -limit..limit, by best match.
inline int Lag(const std::vector<float>& early, const std::vector<float>& late, int limit) {
    double best = 0.0;
    int bestLag = -limit - 1;
    for (int lag = -limit; lag <= limit; ++lag) {
        double sum = 0.0;
        for (int i = limit; i + limit < static_cast<int>(early.size()); ++i) {
            sum += static_cast<double>(early[static_cast<std::size_t>(i)]) *
                   static_cast<double>(late[static_cast<std::size_t>(i + lag)]);
        }
        if (sum > best) {
            best = sum;
            bestLag = lag;
        }
    }
    return bestLag;
}
