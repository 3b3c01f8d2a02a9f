#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>

/// The lengths of the blocks passed to the filter: fixed, or random.
class BlockSizes {
public:
    /// Reads "10" (ms, 1..1000) or "random:SEED". @return none for anything else
    static std::optional<BlockSizes> Parse(const std::string& text);

    /// @return frames, from 1 to one second
    std::size_t Next(int sampleRate);

private:
    static constexpr int kLongestMs = 1000;

    int mMs = 10;
    std::optional<std::mt19937> mRandom;
};
