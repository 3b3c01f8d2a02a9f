#pragma once

#include "common/pcm_view.h"

namespace audio_filter::internal {

/// The arithmetic of AudioGain: memoryless curves that amplify quiet samples and compress loud ones.
/// They are odd-symmetric, at 16 bits up to the final shift, which rounds down. A gain is in (0, 1].
/// Every curve maps the samples of a view in place.

/// Two slopes that meet at the knee, which maps to full scale minus the knee.
struct GainCurveS16 {
    int knee;        ///< sample value, 8192..16383
    int innerSlope;  ///< Q10, below the knee
    int outerSlope;  ///< Q10, above it
    int offset;      ///< Q10, the curve's value at the knee
};

/// Two slopes on samples nominally in -1..1.
struct GainCurveFloat {
    float knee;        ///< 0.25..0.5
    float innerSlope;  ///< below the knee
    float outerSlope;  ///< above it
    float offset;      ///< the curve's value at the knee
};

GainCurveS16 MakeGainCurveS16(float gain);
GainCurveFloat MakeGainCurveFloat(float gain);

void ApplyGain(const GainCurveS16& curve, PcmView<short> samples);
void ApplyGain(const GainCurveFloat& curve, PcmView<float> samples);

/// The alternative curve of three slopes: double, shift, compress.
void ApplyThreeSlopeGain(float gain, PcmView<short> samples);
void ApplyThreeSlopeGain(float gain, PcmView<float> samples);

}  // namespace audio_filter::internal
