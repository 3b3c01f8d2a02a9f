#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "support/bytes.h"
#include "support/signals.h"
#include "units/audio_gain.h"
#include "units/audio_mixing.h"
#include "units/phase_check.h"

/// Every kernel on buffers of 64 KiB, through its class. The counter "memcpys" is the time relative
/// to a copy of all input bytes, measured right afterwards.

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kBufferBytes = 65536;

template <typename Sample>
constexpr SampleFmt kFormat = sizeof(Sample) == 2 ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT;

template <typename Sample>
std::vector<Sample> Signal(std::size_t buffers) {
    std::mt19937 random(1);
    return As<Sample>(NoisySpeech(random, buffers * kBufferBytes / sizeof(Sample), 32000.0));
}

void Copy(const std::vector<char>& from, std::vector<char>& to) {
    std::memcpy(to.data(), from.data(), to.size());
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
}

double NanosecondsOfACopy(std::size_t buffers) {
    constexpr int kCopies = 20'000;
    const std::vector<char> from(buffers * kBufferBytes, 1);
    std::vector<char> to(from.size());
    const auto begin = Clock::now();
    for (int i = 0; i < kCopies; ++i) {
        Copy(from, to);
    }
    return std::chrono::duration<double, std::nano>(Clock::now() - begin).count() / kCopies;
}

template <typename Step>
void InCopies(benchmark::State& state, std::size_t buffers, Step step) {
    const auto begin = Clock::now();
    for (auto _ : state) {
        step();
        benchmark::ClobberMemory();
    }
    const double elapsed = std::chrono::duration<double, std::nano>(Clock::now() - begin).count();
    state.counters["memcpys"] =
        elapsed / static_cast<double>(state.iterations()) / NanosecondsOfACopy(buffers);
}

void Memcpy64KiB(benchmark::State& state) {
    const auto buffers = static_cast<std::size_t>(state.range(0));
    const std::vector<char> from(buffers * kBufferBytes, 1);
    std::vector<char> to(from.size());
    InCopies(state, buffers, [&] { Copy(from, to); });
}
BENCHMARK(Memcpy64KiB)->ArgName("buffers")->Arg(1)->Arg(2)->Arg(4);

template <typename Sample>
void Gain64KiB(benchmark::State& state) {
    std::vector<Sample> samples = Signal<Sample>(1);
    AudioGain gain;
    gain.Init(kFormat<Sample>);
    InCopies(state, 1, [&] { gain.Process(BytesOf(samples), ByteCount(samples)); });
}
BENCHMARK(Gain64KiB<short>);
BENCHMARK(Gain64KiB<float>);

template <typename Sample>
void Mixing64KiB(benchmark::State& state) {
    const auto sources = static_cast<int>(state.range(0));
    const auto buffers = static_cast<std::size_t>(sources);
    const std::vector<Sample> in = Signal<Sample>(buffers);
    std::vector<Sample> out(in.size() / buffers);
    const auto mixing = std::make_unique<AudioMixing>();
    mixing->Init(kFormat<Sample>);
    InCopies(state, buffers, [&] {
        int size = ByteCount(in);
        mixing->Process(BytesOf(in), BytesOf(out), size, sources);
    });
}
BENCHMARK(Mixing64KiB<short>)->ArgName("sources")->Arg(2)->Arg(4)->Arg(16);
BENCHMARK(Mixing64KiB<float>)->ArgName("sources")->Arg(2)->Arg(4);

enum Detector { kRatio, kScore };

template <typename Sample, Detector detector>
void PhaseCheck64KiB(benchmark::State& state) {
    std::vector<Sample> samples = Signal<Sample>(1);
    const bool planar = state.range(0) != 0;
    const bool correcting = state.range(1) != 0;
    if (correcting) {
        // Loud in the right channel only: opposed with and without the left one negated.
        for (std::size_t i = 0; i < samples.size() / 2; ++i) {
            samples[planar ? i : 2 * i] = 0;
        }
    }
    PhaseCheck check;
    check.Init(32000, planar);
    const int count = static_cast<int>(samples.size());
    InCopies(state, 1, [&] {
        if constexpr (detector == kRatio) {
            check.Check(samples.data(), count);
        } else {
            check.Check2(samples.data(), count);
        }
    });
}
BENCHMARK(PhaseCheck64KiB<short, kRatio>)
    ->ArgNames({"planar", "correcting"})
    ->ArgsProduct({{0, 1}, {0, 1}});
BENCHMARK(PhaseCheck64KiB<float, kRatio>)
    ->ArgNames({"planar", "correcting"})
    ->ArgsProduct({{0, 1}, {0, 1}});
BENCHMARK(PhaseCheck64KiB<short, kScore>)->ArgNames({"planar", "correcting"})->Args({0, 0});
BENCHMARK(PhaseCheck64KiB<float, kScore>)->ArgNames({"planar", "correcting"})->Args({0, 0});

}  // namespace
