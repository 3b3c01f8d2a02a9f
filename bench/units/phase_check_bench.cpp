#include "units/phase_check.h"

#include <benchmark/benchmark.h>

#include "../support/blocks.h"

namespace {

template <typename Sample>
void Check(benchmark::State& state) {
    Blocks<Sample> blocks(2);
    PhaseCheck check;
    check.Init(32000, false);
    for (auto _ : state) {
        check.Check(blocks.Next(), blocks.Samples());
    }
}
BENCHMARK(Check<short>);
BENCHMARK(Check<float>);

}  // namespace
