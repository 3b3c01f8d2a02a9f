/// The same blocks through the bare suppressor or through the chain, for callgrind:
///     chain_calls bare|s16|f32 CHANNELS FRAMES_PER_BLOCK BLOCKS [detector]
/// At 32000 Hz, with phase check, noise suppression and gain on. Music detection, which this rate
/// has, runs only with `detector`.

#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "support/bare_suppressor.h"
#include "support/signals.h"

namespace {

constexpr std::size_t kFrames = 320 * 1000;

void RunBare(const std::vector<short>& samples, int channels, int blocks) {
    std::vector<std::unique_ptr<BareSuppressor>> bare;
    for (int channel = 0; channel < channels; ++channel) {
        bare.push_back(std::make_unique<BareSuppressor>(32000, 3));
    }
    short out[320];
    for (int block = 0; block < blocks; ++block) {
        for (auto& suppressor : bare) {
            suppressor->Process(&samples[static_cast<std::size_t>(block % 1000) * 320], out);
        }
    }
}

template <typename Sample>
void RunChain(const std::vector<Sample>& samples, int channels, int frames, int blocks,
              bool detector) {
    const auto filter = std::make_unique<AudioFilter>();
    ProcessSwitchMap switches = {{AP_DENOISE, true}, {AP_PHASE_CHECK, true}, {AP_GAIN, true}};
    filter->Init(32000, channels, sizeof(Sample) == 2 ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT, &switches);
    filter->mMusicCheck = detector;
    const std::size_t block = static_cast<std::size_t>(frames) * static_cast<std::size_t>(channels);
    std::vector<char> out((block + 640) * sizeof(Sample));
    const std::vector<AVSourceType> sources = {AV_SOURCE_MICROPHONE};
    AVParam param;
    std::size_t at = 0;
    for (int i = 0; i < blocks; ++i) {
        at = at + block > samples.size() ? 0 : at;
        int size = static_cast<int>(block * sizeof(Sample));
        filter->Process(reinterpret_cast<const char*>(&samples[at]), out.data(), size, sources,
                        param, 0);
        at += block;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 5) {
        std::cerr << "chain_calls bare|s16|f32 CHANNELS FRAMES_PER_BLOCK BLOCKS [detector]\n";
        return 2;
    }
    const std::string chain = argv[1];
    const int channels = std::atoi(argv[2]);
    const int frames = std::atoi(argv[3]);
    const int blocks = std::atoi(argv[4]);
    std::mt19937 random(1);
    const std::vector<float> signal =
        NoisySpeech(random, kFrames * static_cast<std::size_t>(channels), 32000.0);
    const std::vector<short> shorts = As<short>(signal);
    if (chain == "bare") {
        RunBare(shorts, channels, blocks);
    } else if (chain == "s16") {
        RunChain(shorts, channels, frames, blocks, argc > 5);
    } else {
        RunChain(signal, channels, frames, blocks, argc > 5);
    }
    return 0;
}
