#include <array>
#include <cstdio>

#include "audio_filter/audio_filter.h"
#include "common/result_code.h"

/// Cleans raw 16-bit mono PCM at 32000 Hz from standard input to standard output, 10 ms at a time.
int main() {
    AudioFilter filter;
    ProcessSwitchMap switches = {{AP_DENOISE, true}, {AP_GAIN, true}};
    if (filter.Init(32000, 1, SAMPLE_FMT_S16, &switches) != RESULT_OK || !switches[AP_DENOISE]) {
        return 1;
    }
    AVParam param;
    std::array<char, 640> block = {};
    std::array<char, 640 + 640> clean = {};  // up to one suppressor block more than the input
    while (const std::size_t bytes = std::fread(block.data(), 1, block.size(), stdin)) {
        int size = static_cast<int>(bytes);
        if (filter.Process(block.data(), clean.data(), size, {AV_SOURCE_MICROPHONE}, param, 0) !=
            RESULT_OK) {
            return 1;
        }
        std::fwrite(clean.data(), 1, static_cast<std::size_t>(size), stdout);
    }
    return 0;
}
