#include "classifier/audio_classifier.h"

#include <benchmark/benchmark.h>

#include "../support/blocks.h"

namespace {

/// Blocks of 10 ms, the analysis once a second among them.
void Classifier(benchmark::State& state) {
    Blocks<short> blocks(1);
    AudioClassifier classifier;
    classifier.Init(1, static_cast<int>(state.range(0)), SAMPLE_FMT_S16);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            classifier.MusicCheck(reinterpret_cast<unsigned char*>(blocks.Next()),
                                  static_cast<unsigned int>(blocks.Bytes())));
    }
}
BENCHMARK(Classifier)->ArgName("rate")->Arg(32000)->Arg(44100)->Arg(48000);

}  // namespace
