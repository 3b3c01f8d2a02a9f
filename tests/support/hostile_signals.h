#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>

inline constexpr float kLargestFloat = std::numeric_limits<float>::max();
inline constexpr float kLeastFloat = std::numeric_limits<float>::denorm_min();

/// Signals that no microphone produces, by the index of the sample in the stream.
struct HostileSignal {
    const char* name;
    float (*Sample)(std::size_t);  ///< of a float stream
};

inline constexpr HostileSignal kHostileSignals[] = {
    {"NaN", [](std::size_t) { return std::numeric_limits<float>::quiet_NaN(); }},
    {"infinities", [](std::size_t i) { return i % 2 == 0 ? INFINITY : -INFINITY; }},
    {"NaN now and then", [](std::size_t i) { return i % 7 == 0 ? std::nanf("") : 0.1F; }},
    {"the largest floats",
     [](std::size_t i) { return i % 3 == 0 ? kLargestFloat : -kLargestFloat; }},
    {"subnormals", [](std::size_t i) { return i % 2 == 0 ? kLeastFloat : -3.0F * kLeastFloat; }},
    {"a full-scale square", [](std::size_t i) { return i / 40 % 2 == 0 ? 1.0F : -1.0F; }},
    {"DC", [](std::size_t) { return 1.0F; }},
    {"-32768 everywhere", [](std::size_t) { return -1.0F; }},
    {"alternating extremes", [](std::size_t i) { return i % 2 == 0 ? 1.0F : -1.0F; }},
    {"beyond full scale", [](std::size_t i) { return i % 2 == 0 ? 1e9F : -1e9F; }},
    {"silence", [](std::size_t) { return 0.0F; }},
};

/// As a sample of a stream. In 16-bit, values saturate and NaN becomes 0.
template <typename Sample>
Sample Converted(float sample) {
    if constexpr (std::is_same_v<Sample, float>) {
        return sample;
    } else {
        const float bounded = std::isnan(sample) ? 0.0F : std::clamp(sample, -1.0F, 1.0F);
        return static_cast<Sample>(std::min(32767L, std::lround(bounded * 32768.0F)));
    }
}
