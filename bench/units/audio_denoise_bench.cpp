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

/// Silence after speech: after three seconds the memories of the float band filters are subnormal,
/// which is slow, and they stay so.
void DenoiseFloatSilence(benchmark::State& state) {
    Blocks<float> blocks(1);
    AudioDenoise denoise;
    denoise.Init(32000, 1, SAMPLE_FMT_FLT, 3);
    const std::vector<char> silence(static_cast<std::size_t>(blocks.Bytes()));
    std::vector<char> out(2 * silence.size());
    const auto process = [&](const char* in) {
        int size = blocks.Bytes();
        denoise.Process(in, out.data(), size);
    };
    for (int block = 0; block < 400; ++block) {
        process(block < 100 ? blocks.NextBytes() : silence.data());
    }
    for (auto _ : state) {
        process(silence.data());
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(DenoiseFloatSilence);

}  // namespace
