/// Suppresses the noise of a raw recording, 16-bit mono at 32000 Hz, and nothing else:
///     suppress bare|ours|apm|speex IN OUT
/// bare: the packaged band filters and suppressor; ours: AudioDenoise, level 3;
/// apm: the same package's processing module with only its suppressor on; speex: SpeexDSP's
/// preprocessor with only its noise suppression on.

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
    if (argc != 4) {
        std::cerr << "suppress bare|ours|apm|speex IN OUT\n";
        return 2;
    }
    const std::string name = argv[1];
    const Suppress suppress = name == "bare"   ? Bare()
                              : name == "ours" ? Ours()
                              : name == "apm"  ? Apm()
                                               : Speex();
    std::ifstream in(argv[2], std::ios::binary);
    std::ofstream out(argv[3], std::ios::binary);
    short block[kBlock];
    short result[kBlock];
    while (in.read(reinterpret_cast<char*>(block), sizeof(block))) {
        suppress(block, result);
        out.write(reinterpret_cast<const char*>(result), sizeof(result));
    }
    return out.flush() ? 0 : 1;
}
