#include "classifier/audio_classifier.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "../support/blocks.h"

namespace {

/// Processes a block of 320 samples.
void RunBlock(AudioClassifier& classifier, Blocks<short>& blocks) {
    benchmark::DoNotOptimize(classifier.MusicCheck(reinterpret_cast<unsigned char*>(blocks.Next()),
                                                   static_cast<unsigned int>(blocks.Bytes())));
}

/// Blocks of 10 ms, including the analysis once a second.
void Classifier(benchmark::State& state) {
    Blocks<short> blocks(1);
    AudioClassifier classifier;
    classifier.Init(1, static_cast<int>(state.range(0)), SAMPLE_FMT_S16);
    for (auto _ : state) {
        RunBlock(classifier, blocks);
    }
}
BENCHMARK(Classifier)->ArgName("rate")->Arg(32000)->Arg(44100)->Arg(48000);

/// Blocks without an analysis.
void ClassifierOrdinaryCall(benchmark::State& state) {
    Blocks<short> blocks(1);
    AudioClassifier classifier;
    classifier.Init(1, static_cast<int>(state.range(0)), SAMPLE_FMT_S16);
    for (auto _ : state) {
        classifier.mGathered = 0;
        RunBlock(classifier, blocks);
    }
}
BENCHMARK(ClassifierOrdinaryCall)->ArgName("rate")->Arg(32000)->Arg(44100)->Arg(48000);

/// Samples of an analysis.
unsigned int Full(AudioClassifier& classifier) {
    const algoParam param =
        classifier.getAlgoParam(static_cast<unsigned short>(classifier.mSampleRate));
    return 60 * param.hop + param.frameLength;
}

/// Gathers a steady tone. Its segments are equally loud, so the spectrum decides.
void Gather(AudioClassifier& classifier, double step) {
    std::vector<short> tone(Full(classifier));
    for (std::size_t n = 0; n < tone.size(); ++n) {
        tone[n] = static_cast<short>(12000.0 * std::sin(step * static_cast<double>(n)));
    }
    std::memcpy(classifier.mHistory.data(), tone.data(), tone.size() * sizeof(short));
    classifier.mGathered = Full(classifier);
}

/// Only the call that analyses, on music, which takes every step.
void ClassifierAnalysingCall(benchmark::State& state) {
    Blocks<short> blocks(1);
    AudioClassifier classifier;
    classifier.Init(1, static_cast<int>(state.range(0)), SAMPLE_FMT_S16);
    for (double step = 0.3; step < 3.1 && !classifier.GetRealTimeCheckRet(); step += 0.01) {
        Gather(classifier, step);
        RunBlock(classifier, blocks);
    }
    if (!classifier.GetRealTimeCheckRet()) {
        state.SkipWithError("no steady tone is music");
    }
    const unsigned int full = Full(classifier);
    for (auto _ : state) {
        classifier.mGathered = full;
        RunBlock(classifier, blocks);
    }
}
BENCHMARK(ClassifierAnalysingCall)->ArgName("rate")->Arg(32000)->Arg(44100)->Arg(48000);

}  // namespace
