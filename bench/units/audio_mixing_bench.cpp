#include "units/audio_mixing.h"

#include <benchmark/benchmark.h>

#include <memory>

#include "../support/blocks.h"

namespace {

template <typename Sample>
void Mixing(benchmark::State& state) {
    const auto sources = static_cast<int>(state.range(0));
    Blocks<Sample> blocks(2 * static_cast<std::size_t>(sources));
    const auto mixing = std::make_unique<AudioMixing>();
    mixing->Init(sizeof(Sample) == 2 ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT);
    std::vector<char> out(static_cast<std::size_t>(blocks.Bytes()));
    for (auto _ : state) {
        int size = blocks.Bytes();
        mixing->Process(blocks.NextBytes(), out.data(), size, sources);
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(Mixing<short>)->ArgName("sources")->Arg(2)->Arg(4);
BENCHMARK(Mixing<float>)->ArgName("sources")->Arg(2)->Arg(4);

}  // namespace
