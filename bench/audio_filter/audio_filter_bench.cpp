#include "audio_filter/audio_filter.h"

#include <benchmark/benchmark.h>

#include <memory>

#include "../support/blocks.h"

namespace {

const ProcessSwitchMap kAllOn = {
    {AP_DENOISE, true}, {AP_PHASE_CHECK, true}, {AP_GAIN, true}, {AP_MIXING, true}};

template <typename Sample>
constexpr SampleFmt kFmt = sizeof(Sample) == 2 ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT;

/// Everything on, with the microphone alone or mixed with other sources. At 32000 Hz music detection
/// runs; at 31999 Hz the blocks go through the hand-off for resampling.
template <typename Sample>
void Filter(benchmark::State& state) {
    const auto rate = static_cast<int>(state.range(0));
    const auto channels = static_cast<std::size_t>(state.range(1));
    const auto count = static_cast<std::size_t>(state.range(2));
    Blocks<Sample> blocks(channels * count);
    const auto filter = std::make_unique<AudioFilter>();
    ProcessSwitchMap switches = kAllOn;
    filter->Init(rate, static_cast<int>(channels), kFmt<Sample>, &switches);
    std::vector<AVSourceType> sources(count);
    for (std::size_t i = 0; i < count; ++i) {
        sources[i] = static_cast<AVSourceType>(i);
    }
    std::vector<char> out(2 * static_cast<std::size_t>(blocks.Bytes()));
    AVParam param;
    for (auto _ : state) {
        int size = blocks.Bytes();
        const char* in = blocks.NextBytes();
        if (filter->Process(in, out.data(), size, sources, param, 0) == 9) {
            filter->ProcessResample(in, out.data(), size, {AV_SOURCE_MICROPHONE}, param, 0);
        }
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(Filter<short>)
    ->ArgNames({"rate", "channels", "sources"})
    ->Args({32000, 1, 1})
    ->Args({32000, 2, 1})
    ->Args({32000, 2, 2})
    ->Args({32000, 2, 4})
    ->Args({31999, 1, 1})
    ->Args({31999, 2, 1});
BENCHMARK(Filter<float>)
    ->ArgNames({"rate", "channels", "sources"})
    ->Args({32000, 1, 1})
    ->Args({32000, 2, 1})
    ->Args({31999, 1, 1});

}  // namespace
