#include "classifier/spectrum.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

using namespace audio_filter::internal;

namespace {

/// The magnitudes of all bins of a tone that fills the transform. Constructing it is not timed.
void OneSpectrum(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    std::vector<float> signal(size);
    for (std::size_t n = 0; n < size; ++n) {
        signal[n] = 10000.0F * std::sin(0.37F * static_cast<float>(n));
    }
    std::vector<float> magnitudes(size / 2 + 1);
    SpectrumTransform transform(size);
    for (auto _ : state) {
        transform.Run(signal, 0, magnitudes);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(OneSpectrum)->ArgName("size")->Arg(63998)->Arg(88198)->Arg(95998);

}  // namespace
