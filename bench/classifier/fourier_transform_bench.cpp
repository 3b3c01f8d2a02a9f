#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <cmath>
#include <vector>

namespace {

/// The yardstick of the classifier's transform: FFTW on 65536 real samples in single precision.
void FourierTransform(benchmark::State& state) {
    constexpr int kSize = 65536;
    std::vector<float> signal(kSize);
    auto* bins = fftwf_alloc_complex(kSize / 2 + 1);
    fftwf_plan plan =
        fftwf_plan_dft_r2c_1d(kSize, signal.data(), bins, static_cast<unsigned>(state.range(0)));
    for (std::size_t n = 0; n < signal.size(); ++n) {
        signal[n] = std::sin(0.37F * static_cast<float>(n));
    }
    for (auto _ : state) {
        fftwf_execute(plan);
        benchmark::ClobberMemory();
    }
    fftwf_destroy_plan(plan);
    fftwf_free(bins);
}
BENCHMARK(FourierTransform)->ArgName("flags")->Arg(FFTW_ESTIMATE)->Arg(FFTW_MEASURE);

}  // namespace
