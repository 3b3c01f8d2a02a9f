#include "units/audio_denoise.h"

#include <benchmark/benchmark.h>

#include "../support/blocks.h"
#include "support/bare_suppressor.h"

namespace {

void BareSuppressorMono(benchmark::State& state) {
    Blocks<short> blocks(1);
    BareSuppressor bare(32000, 3);
    short out[320];
    for (auto _ : state) {
        bare.Process(blocks.Next(), out);
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK(BareSuppressorMono);

template <typename Sample>
void Denoise(benchmark::State& state) {
    const auto channels = static_cast<int>(state.range(0));
    Blocks<Sample> blocks(static_cast<std::size_t>(channels));
    AudioDenoise denoise;
    denoise.Init(32000, channels, sizeof(Sample) == 2 ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT, 3);
    std::vector<char> out(2 * static_cast<std::size_t>(blocks.Bytes()));
    for (auto _ : state) {
        int size = blocks.Bytes();
        denoise.Process(blocks.NextBytes(), out.data(), size);
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(Denoise<short>)->ArgName("channels")->Arg(1)->Arg(2);
BENCHMARK(Denoise<float>)->ArgName("channels")->Arg(1)->Arg(2);

}  // namespace
