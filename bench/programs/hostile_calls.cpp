/// The cost of hostile samples relative to speech: for every signal, the chain with the highest ratio
/// for blocks of 10 ms. Both signals run in turn; the lowest median of each counts.

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "bench/programs/stopwatch.h"
#include "common/result_code.h"
#include "support/hostile_signals.h"
#include "support/signals.h"

namespace {

constexpr std::size_t kBlocks = 250;
constexpr int kTurns = 3;

struct Chain {
    int rate;
    int channels;
    SampleFmt fmt;
    std::size_t sources;

    std::size_t Samples() const {
        return static_cast<std::size_t>(rate / 100 * channels) * sources;
    }
    std::string Name() const {
        return std::to_string(rate) + " Hz, " + std::to_string(channels) + " channel(s), format " +
               std::to_string(fmt) + ", " + std::to_string(sources) + " source(s)";
    }
};

/// A filter with everything on, and blocks to process repeatedly.
template <typename Sample>
class Run {
public:
    Run(const Chain& chain, std::vector<Sample> signal)
        : mChain(chain), mSignal(std::move(signal)), mSources(chain.sources, AV_SOURCE_1) {
        mSources[0] = AV_SOURCE_MICROPHONE;
        ProcessSwitchMap switches = {
            {AP_DENOISE, true}, {AP_PHASE_CHECK, true}, {AP_GAIN, true}, {AP_MIXING, true}};
        mFilter->Init(chain.rate, chain.channels, chain.fmt, &switches);
    }

    double MedianMicroseconds() {
        const std::size_t samples = mChain.Samples();
        std::vector<Sample> in(samples);
        std::vector<Sample> out(samples + 640);
        std::vector<double> times;
        AVParam param;
        for (std::size_t block = 0; block < kBlocks; ++block) {
            std::copy_n(&mSignal[block * samples], samples, in.begin());
            char* from = reinterpret_cast<char*>(in.data());
            char* to = reinterpret_cast<char*>(out.data());
            int size = static_cast<int>(samples * sizeof(Sample));
            const double start = ThreadMicroseconds();
            const int code = mFilter->Process(from, to, size, mSources, param, 0);
            if (code == RESULT_NEEDS_RESAMPLING) {
                // The first 10 ms at the requested rate stand for the resampled block.
                const std::vector<AVSourceType> one = {AV_SOURCE_MICROPHONE};
                mFilter->SyncProcessDelay(to, to, size, one);
                size = 320 * mChain.channels * static_cast<int>(sizeof(Sample));
                mFilter->ProcessResample(from, to, size, one, param, 0);
            }
            times.push_back(ThreadMicroseconds() - start);
        }
        return Percentile(times, 0.5);
    }

private:
    Chain mChain;
    std::vector<Sample> mSignal;
    std::vector<AVSourceType> mSources;
    std::unique_ptr<AudioFilter> mFilter = std::make_unique<AudioFilter>();
};

template <typename Sample>
double Ratio(const Chain& chain, const HostileSignal& hostile) {
    const std::size_t count = chain.Samples() * kBlocks;
    std::mt19937 random(1);
    std::vector<Sample> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = Converted<Sample>(hostile.Sample(i));
    }
    Run<Sample> speech(chain, As<Sample>(NoisySpeech(random, count, chain.rate)));
    Run<Sample> hard(chain, std::move(samples));
    double usual = speech.MedianMicroseconds();
    double worst = hard.MedianMicroseconds();
    for (int turn = 1; turn < kTurns; ++turn) {
        usual = std::min(usual, speech.MedianMicroseconds());
        worst = std::min(worst, hard.MedianMicroseconds());
    }
    return worst / usual;
}

}  // namespace

int main() {
    std::printf("| samples | time / speech, at most | in the chain |\n|---|---|---|\n");
    for (const HostileSignal& hostile : kHostileSignals) {
        double most = 0.0;
        std::string where;
        for (const int rate : {8000, 32000, 44100, 48000}) {
            for (const int channels : {1, 2}) {
                for (const std::size_t sources : {1U, 2U}) {
                    for (const SampleFmt fmt :
                         {SAMPLE_FMT_S16, SAMPLE_FMT_FLT, SAMPLE_FMT_S16P, SAMPLE_FMT_FLTP}) {
                        const Chain chain = {rate, channels, fmt, sources};
                        const bool isFloat = fmt == SAMPLE_FMT_FLT || fmt == SAMPLE_FMT_FLTP;
                        const double ratio =
                            isFloat ? Ratio<float>(chain, hostile) : Ratio<short>(chain, hostile);
                        if (ratio > most) {
                            most = ratio;
                            where = chain.Name();
                        }
                    }
                }
            }
        }
        std::printf("| %s | %.2f | %s |\n", hostile.name, most, where.c_str());
    }
    return 0;
}
