#pragma once

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>

/// The seed of this run: AUDIO_FILTER_SEED if set, else a new one. Printed once.
inline std::uint32_t Seed() {
    static const std::uint32_t seed = [] {
        const char* given = std::getenv("AUDIO_FILTER_SEED");
        const std::uint32_t value =
            given != nullptr ? static_cast<std::uint32_t>(std::strtoul(given, nullptr, 10))
                             : std::random_device()();
        std::cout << "AUDIO_FILTER_SEED=" << value << std::endl;
        return value;
    }();
    return seed;
}

/// A new generator for each test.
inline std::mt19937 SeededRandom() {
    return std::mt19937(Seed());
}

inline int RandomInt(std::mt19937& random, int lowest, int highest) {
    return std::uniform_int_distribution<int>(lowest, highest)(random);
}
