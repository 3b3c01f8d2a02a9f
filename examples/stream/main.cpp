#include <array>
#include <cstdio>

#include "common/result_code.h"
#include "stream/stream.h"

/// Cleans raw 32-bit float stereo PCM at 48000 Hz from standard input to standard output, in blocks of any
/// length: as many frames out as in, without the latency at the start.
int main() {
    using namespace audio_filter;
    constexpr std::size_t kFrameBytes = 2 * sizeof(float);
    const StreamFormat format = {.sampleRate = 48000, .channels = 2, .samples = SAMPLE_FMT_FLT};
    Stream stream;
    if (stream.Init(format, {.suppression = 2, .phaseCheck = true}) != RESULT_OK) {
        return 1;
    }
    std::array<float, 2 * 1000> block = {};
    const void* const in[] = {block.data()};
    void* const out[] = {block.data()};  // in place
    int latency = stream.Latency();
    const auto write = [&](int frames) {
        const int dropped = frames < latency ? frames : latency;
        latency -= dropped;
        std::fwrite(block.data() + 2 * dropped, kFrameBytes,
                    static_cast<std::size_t>(frames - dropped), stdout);
    };
    while (const std::size_t frames = std::fread(block.data(), kFrameBytes, 1000, stdin)) {
        if (stream.Process(in, out, static_cast<int>(frames)) != RESULT_OK) {
            return 1;
        }
        write(static_cast<int>(frames));
    }
    while (const int frames = stream.Drain(out, 1000)) {
        write(frames);
    }
    return 0;
}
