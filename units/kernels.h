#pragma once

#include <cstddef>
#include <span>

#include "common/pcm_view.h"
#include "units/gain_curve.h"
#include "units/phase_statistics.h"

namespace audio_filter::internal {

/// The inner loops of the units, compiled from one source (kernel_loops.inc) for each instruction set
/// of the build. Every level gives the same bytes.
struct Kernels {
    const char* level;

    void (*gainS16)(const GainCurveS16& curve, PcmView<short> samples);
    void (*gainFloat)(const GainCurveFloat& curve, PcmView<float> samples);

    /// Conversion of samples into a mixer row, and the limited sum of rows `stride` samples apart.
    void (*toMixerS16)(PcmView<const short> samples, short* row);
    void (*toMixerFloat)(PcmView<const float> samples, short* row);
    void (*mixS16)(const short* rows, std::size_t stride, std::size_t count, PcmView<short> out);
    void (*mixFloat)(const short* rows, std::size_t stride, std::size_t count, PcmView<float> out);

    PhaseCounts (*countPhasesS16)(PcmView<short> samples, const StereoLayout& layout, bool negate);
    PhaseCounts (*countPhasesFloat)(PcmView<float> samples, const StereoLayout& layout,
                                    bool negate);

    /// Conversion of the suppressor's output: every sample saturated and rounded (round_to_s16.h).
    void (*roundToS16)(std::span<const float> samples, short* out);
};

/// The levels that this machine supports, the baseline first.
std::span<const Kernels> KernelLevels();

/// The best of them, selected once when the library is loaded; until then, the baseline.
const Kernels& BestKernels();

}  // namespace audio_filter::internal
