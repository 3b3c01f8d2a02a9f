#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "units/kernels.h"
#include "units/mix_limiter.h"
#include "units/round_to_s16.h"

namespace audio_filter::internal {

// The instruction set is an attribute of each loop, not an option of the file: inline functions from
// headers must remain code that every machine can run.

namespace {

#define KERNEL_LEVEL plain
#define KERNEL_TARGET
#include "units/kernel_loops.inc"
#undef KERNEL_LEVEL
#undef KERNEL_TARGET

#define KERNEL_LEVEL avx2
#define KERNEL_TARGET [[gnu::target("avx2")]]
#include "units/kernel_loops.inc"
#undef KERNEL_LEVEL
#undef KERNEL_TARGET

constexpr Kernels kLevels[] = {plain::MakeTable("plain"), avx2::MakeTable("avx2")};

}  // namespace

std::span<const Kernels> KernelLevels() {
    __builtin_cpu_init();
    return {kLevels, __builtin_cpu_supports("avx2") ? std::size_t{2} : std::size_t{1}};
}

}  // namespace audio_filter::internal
