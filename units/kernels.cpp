#include "units/kernels.h"

namespace audio_filter::internal {

namespace {

/// Null until this file's initialisers run. A host's global objects may process audio before that.
constinit const Kernels* gBest = nullptr;

[[maybe_unused]] const bool gPicked = [] {
    gBest = &KernelLevels().back();
    return true;
}();

}  // namespace

const Kernels& BestKernels() {
    return gBest != nullptr ? *gBest : KernelLevels().front();
}

}  // namespace audio_filter::internal
