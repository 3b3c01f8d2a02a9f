#pragma once

#include <random>
#include <vector>

#include "support/bytes.h"
#include "support/signals.h"

/// Ten seconds of a signal in blocks of 10 ms at 32000 Hz, repeated endlessly.
template <typename Sample>
class Blocks {
public:
    explicit Blocks(std::size_t channels) : mSamplesPerBlock(320 * channels) {
        std::mt19937 random(1);
        mSamples = As<Sample>(NoisySpeech(random, 1000 * mSamplesPerBlock, 32000.0));
    }

    Sample* Next() {
        Sample* block = mSamples.data() + mBlock * mSamplesPerBlock;
        mBlock = (mBlock + 1) % 1000;
        return block;
    }
    const char* NextBytes() { return reinterpret_cast<const char*>(Next()); }

    int Samples() const { return static_cast<int>(mSamplesPerBlock); }
    int Bytes() const { return static_cast<int>(mSamplesPerBlock * sizeof(Sample)); }

private:
    std::vector<Sample> mSamples;
    std::size_t mSamplesPerBlock;
    std::size_t mBlock = 0;
};
