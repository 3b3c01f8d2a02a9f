#include <array>
#include <cstdio>

#include "units/audio_denoise.h"
#include "units/audio_gain.h"

/// Cleans raw 16-bit mono PCM of 32000 Hz from standard input to standard output, 10 ms at a time.
int main() {
    AudioDenoise denoise;
    AudioGain gain;
    if (denoise.Init(32000, 1, SAMPLE_FMT_S16, 3) != 0 || gain.Init(SAMPLE_FMT_S16) != 0) {
        return 1;
    }
    std::array<char, 640> block = {};
    std::array<char, 640 + 640> clean = {};  // a block, and one frame more
    while (const std::size_t bytes = std::fread(block.data(), 1, block.size(), stdin)) {
        int size = static_cast<int>(bytes);
        if (denoise.Process(block.data(), clean.data(), size) != 0) {
            return 1;
        }
        gain.Process(clean.data(), size);
        std::fwrite(clean.data(), 1, static_cast<std::size_t>(size), stdout);
    }
    return 0;
}
