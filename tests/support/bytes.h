#pragma once

#include <cstring>
#include <vector>

/// Samples as the bytes that hosts pass.
template <typename Sample>
const char* BytesOf(const std::vector<Sample>& samples) {
    return reinterpret_cast<const char*>(samples.data());
}

template <typename Sample>
char* BytesOf(std::vector<Sample>& samples) {
    return reinterpret_cast<char*>(samples.data());
}

template <typename Sample>
int ByteCount(const std::vector<Sample>& samples) {
    return static_cast<int>(samples.size() * sizeof(Sample));
}

/// Equal to the bit: -0 differs from 0 and one NaN from another.
template <typename Sample>
bool SameBits(const std::vector<Sample>& a, const std::vector<Sample>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Sample)) == 0);
}
