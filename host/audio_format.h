#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <type_traits>

/// The sample formats that the command line uses, both interleaved.
enum class SampleFormat { kS16, kFloat };

/// An interleaved stream.
struct AudioFormat {
    int sampleRate;  ///< Hz
    int channels;    ///< 1..8
    SampleFormat samples;
    bool is24Bit = false;  ///< floats that were integers of 24 bits, and fit such again
};

/// A sample as a float, full scale at 1.
inline float ToFloat(short sample) {
    return static_cast<float>(sample) / 32768.0F;
}
inline float ToFloat(float sample) {
    return sample;
}

/// A float as a sample. 16-bit samples are rounded to nearest and saturated; NaN becomes 0.
template <typename Sample>
Sample FromFloat(float sample) {
    if constexpr (std::is_same_v<Sample, float>) {
        return sample;
    } else {
        const float scaled = std::isnan(sample) ? 0.0F : sample * 32768.0F;
        return static_cast<Sample>(std::lround(std::clamp(scaled, -32768.0F, 32767.0F)));
    }
}

/// A length in messages, such as "1.50 s".
inline std::string SecondsText(std::int64_t frames, int sampleRate) {
    char text[40];
    std::snprintf(text, sizeof(text), "%.2f s",
                  static_cast<double>(frames) / static_cast<double>(sampleRate));
    return text;
}
