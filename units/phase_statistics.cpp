#include "units/phase_statistics.h"

#include "units/kernels.h"

namespace audio_filter::internal {

PhaseCounts CountPhases(PcmView<short> samples, const StereoLayout& layout, bool negateLeft) {
    return BestKernels().countPhasesS16(samples, layout, negateLeft);
}

PhaseCounts CountPhases(PcmView<float> samples, const StereoLayout& layout, bool negateLeft) {
    return BestKernels().countPhasesFloat(samples, layout, negateLeft);
}

}  // namespace audio_filter::internal
