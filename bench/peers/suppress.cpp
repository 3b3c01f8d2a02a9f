/// Suppresses the noise of a raw 16-bit recording, and nothing else:
///     suppress bare|ours|apm|speex IN OUT           mono at 32000 Hz
///     suppress bare|stream IN OUT CHANNELS          interleaved at 48000 Hz
/// bare: the packaged band filters and suppressor for each channel; ours: AudioDenoise, level 3;
/// stream: Stream, level 3, in blocks of 10 ms; apm: the same package's processing module with only its
/// suppressor on; speex: SpeexDSP's preprocessor with only its noise suppression on.

#include <speex/speex_preprocess.h>
#include <webrtc/modules/audio_processing/include/audio_processing.h>
#include <webrtc/modules/interface/module_common_types.h>

#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "stream/stream.h"
#include "support/bare_suppressor.h"
#include "units/audio_denoise.h"

namespace {

constexpr int kRate = 32000;
constexpr std::size_t kBlock = 320;

using Suppress = std::function<void(const short*, short*)>;

Suppress Bare() {
    const auto bare = std::make_shared<BareSuppressor>(kRate, 3);
    return [bare](const short* in, short* out) { bare->Process(in, out); };
}

/// A bare suppressor for each channel of interleaved frames.
Suppress BareChannels(std::size_t channels) {
    std::vector<std::shared_ptr<BareSuppressor>> bare;
    for (std::size_t channel = 0; channel < channels; ++channel) {
        bare.push_back(std::make_shared<BareSuppressor>(kRate, 3));
    }
    return [bare](const short* in, short* out) {
        short block[kBlock];
        for (std::size_t channel = 0; channel < bare.size(); ++channel) {
            for (std::size_t i = 0; i < kBlock; ++i) {
                block[i] = in[i * bare.size() + channel];
            }
            bare[channel]->Process(block, block);
            for (std::size_t i = 0; i < kBlock; ++i) {
                out[i * bare.size() + channel] = block[i];
            }
        }
    };
}

constexpr std::size_t kStreamBlock = 480;

Suppress InAStream(int channels) {
    const auto stream = std::make_shared<audio_filter::Stream>();
    stream->Init({.sampleRate = 48000, .channels = channels, .samples = SAMPLE_FMT_S16},
                 {.suppression = 3});
    return [stream](const short* in, short* out) {
        const void* from[] = {in};
        void* to[] = {out};
        stream->Process(from, to, kStreamBlock);
    };
}

Suppress Ours() {
    const auto denoise = std::make_shared<AudioDenoise>();
    denoise->Init(kRate, 1, SAMPLE_FMT_S16, 3);
    return [denoise](const short* in, short* out) {
        int size = kBlock * sizeof(short);
        denoise->Process(reinterpret_cast<const char*>(in), reinterpret_cast<char*>(out), size);
    };
}

Suppress Apm() {
    const std::shared_ptr<webrtc::AudioProcessing> apm(webrtc::AudioProcessing::Create());
    apm->noise_suppression()->set_level(webrtc::NoiseSuppression::kVeryHigh);
    apm->noise_suppression()->Enable(true);
    return [apm](const short* in, short* out) {
        webrtc::AudioFrame frame;
        frame.UpdateFrame(0, 0, in, kBlock, kRate, webrtc::AudioFrame::kNormalSpeech,
                          webrtc::AudioFrame::kVadUnknown, 1);
        apm->ProcessStream(&frame);
        std::copy(frame.data_, frame.data_ + kBlock, out);
    };
}

Suppress Speex() {
    SpeexPreprocessState* state = speex_preprocess_state_init(kBlock, kRate);
    int on = 1;
    speex_preprocess_ctl(state, SPEEX_PREPROCESS_SET_DENOISE, &on);
    return [state](const short* in, short* out) {
        std::copy(in, in + kBlock, out);
        speex_preprocess_run(state, out);
    };
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4 && argc != 5) {
        std::cerr
            << "suppress bare|ours|apm|speex IN OUT, or suppress bare|stream IN OUT CHANNELS\n";
        return 2;
    }
    const std::string name = argv[1];
    const int channels = argc == 5 ? std::stoi(argv[4]) : 1;
    const Suppress suppress = name == "stream" ? InAStream(channels)
                              : argc == 5      ? BareChannels(static_cast<std::size_t>(channels))
                              : name == "bare" ? Bare()
                              : name == "ours" ? Ours()
                              : name == "apm"  ? Apm()
                                               : Speex();
    const std::size_t samples =
        (name == "stream" ? kStreamBlock : kBlock) * static_cast<std::size_t>(channels);
    std::ifstream in(argv[2], std::ios::binary);
    std::ofstream out(argv[3], std::ios::binary);
    std::vector<short> block(samples);
    std::vector<short> result(samples);
    const auto bytes = static_cast<std::streamsize>(samples * sizeof(short));
    while (in.read(reinterpret_cast<char*>(block.data()), bytes)) {
        suppress(block.data(), result.data());
        out.write(reinterpret_cast<const char*>(result.data()), bytes);
    }
    return out.flush() ? 0 : 1;
}
