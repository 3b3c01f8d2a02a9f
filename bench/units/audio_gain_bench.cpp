#include "units/audio_gain.h"

#include <benchmark/benchmark.h>

#include "../support/blocks.h"

namespace {

template <typename Sample>
void Gain(benchmark::State& state) {
    Blocks<Sample> blocks(2);
    AudioGain gain;
    gain.Init(sizeof(Sample) == 2 ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT);
    for (auto _ : state) {
        gain.Process(blocks.NextBytes(), blocks.Bytes());
    }
}
BENCHMARK(Gain<short>);
BENCHMARK(Gain<float>);

}  // namespace
