#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "units/kernels.h"
#include "units/mix_limiter.h"
#include "units/round_to_s16.h"

namespace audio_filter::internal {

namespace {

#define KERNEL_LEVEL plain
#define KERNEL_TARGET
#include "units/kernel_loops.inc"
#undef KERNEL_LEVEL
#undef KERNEL_TARGET

constexpr Kernels kLevels[] = {plain::MakeTable("plain")};

}  // namespace

std::span<const Kernels> KernelLevels() {
    return kLevels;
}

}  // namespace audio_filter::internal
