/// Call times for ten minutes of blocks of 10 ms with everything on, as shares of 10 ms. Two stereo
/// 16-bit sources, a microphone and another, are mixed; at 48000 Hz through the hand-off for
/// resampling, without the time of the resampler, which is the host's.

#include <cstdio>
#include <memory>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "bench/programs/stopwatch.h"
#include "common/result_code.h"
#include "support/signals.h"

namespace {

constexpr int kBlocks = 10 * 60 * 100;
constexpr double kBlockMicroseconds = 10000.0;

std::vector<double> Times(int rate) {
    const std::size_t perSource = static_cast<std::size_t>(rate) / 100 * 2;
    std::mt19937 random(1);
    const std::vector<short> signal = As<short>(NoisySpeech(random, perSource * 2 * 700, rate));
    std::vector<short> in(perSource * 2);
    std::vector<short> out(perSource * 2 + 640);
    const std::vector<short> resampled(signal.begin(), signal.begin() + 640);
    const auto filter = std::make_unique<AudioFilter>();
    ProcessSwitchMap switches = {
        {AP_DENOISE, true}, {AP_PHASE_CHECK, true}, {AP_GAIN, true}, {AP_MIXING, true}};
    filter->Init(rate, 2, SAMPLE_FMT_S16, &switches);
    const std::vector<AVSourceType> both = {AV_SOURCE_MICROPHONE, AV_SOURCE_1};
    const std::vector<AVSourceType> one = {AV_SOURCE_MICROPHONE};
    AVParam param;
    std::vector<double> times;
    for (std::size_t block = 0; block < kBlocks; ++block) {
        const auto from = signal.begin() + static_cast<std::ptrdiff_t>(block % 700 * in.size());
        std::copy(from, from + static_cast<std::ptrdiff_t>(in.size()), in.begin());
        int size = static_cast<int>(in.size() * sizeof(short));
        const double start = ThreadMicroseconds();
        const int code = filter->Process(reinterpret_cast<const char*>(in.data()),
                                         reinterpret_cast<char*>(out.data()), size, both, param, 0);
        if (code == RESULT_NEEDS_RESAMPLING) {
            char* mix = reinterpret_cast<char*>(out.data());
            filter->SyncProcessDelay(mix, mix, size, one);
            size = static_cast<int>(resampled.size() * sizeof(short));
            filter->ProcessResample(reinterpret_cast<const char*>(resampled.data()), mix, size, one,
                                    param, 0);
        }
        times.push_back(ThreadMicroseconds() - start);
    }
    return times;
}

}  // namespace

int main() {
    std::printf("| rate | median | 99.9 %% | worst | worst / median |\n|---|---|---|---|---|\n");
    for (const int rate : {32000, 44100, 48000}) {
        const std::vector<double> times = Times(rate);
        const double median = Percentile(times, 0.5);
        const double worst = Percentile(times, 1.0);
        std::printf("| %d Hz | %.2f %% | %.2f %% | %.2f %% | %.1f |\n", rate,
                    100.0 * median / kBlockMicroseconds,
                    100.0 * Percentile(times, 0.999) / kBlockMicroseconds,
                    100.0 * worst / kBlockMicroseconds, worst / median);
    }
    return 0;
}
