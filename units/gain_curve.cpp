#include "units/gain_curve.h"

#include <algorithm>

#include "units/kernels.h"

namespace audio_filter::internal {

namespace {

short Saturate(int value) {
    return static_cast<short>(std::clamp(value, -32768, 32767));
}

/// This argument order maps NaN to -1.
float Saturate(float value) {
    return std::min(1.0F, std::max(-1.0F, value));
}

template <typename Sample, typename Curve>
void Map(PcmView<Sample> samples, Curve curve) {
    for (std::size_t i = 0; i < samples.Size(); ++i) {
        samples.Set(i, Saturate(curve(samples.Get(i))));
    }
}

}  // namespace

GainCurveS16 MakeGainCurveS16(float gain) {
    const int knee = static_cast<short>(16383.0F - gain * 8191.0F);
    const int lifted = 32767 - knee;
    const int innerSlope = lifted * 1024 / knee;
    const int outerSlope = knee * 1024 / lifted;
    return {knee, innerSlope, outerSlope, knee * innerSlope};
}

GainCurveFloat MakeGainCurveFloat(float gain) {
    const auto knee = static_cast<float>(0.5 - static_cast<double>(gain) * 0.25);
    const float innerSlope = (1.0F - knee) / knee;
    const float offset = innerSlope * knee;  // rounded, not exactly 1 - knee
    return {knee, innerSlope, 1.0F / innerSlope, offset};
}

void ApplyGain(const GainCurveS16& curve, PcmView<short> samples) {
    BestKernels().gainS16(curve, samples);
}

void ApplyGain(const GainCurveFloat& curve, PcmView<float> samples) {
    BestKernels().gainFloat(curve, samples);
}

void ApplyThreeSlopeGain(float gain, PcmView<short> samples) {
    const int shift = static_cast<int>(gain * 10922.0F);
    Map(samples, [shift](int x) {
        if (x > 32767 - 2 * shift) {
            return (x + 32767) / 2;
        }
        if (x < 2 * shift - 32768) {
            return (x - 32768) / 2;
        }
        if (x > shift) {
            return x + shift;
        }
        if (x < -shift) {
            return x - shift;
        }
        return 2 * x;
    });
}

void ApplyThreeSlopeGain(float gain, PcmView<float> samples) {
    const auto shift = static_cast<float>(static_cast<double>(gain) * 0.3333333333333333);
    const float edge = 2.0F * shift;
    Map(samples, [shift, edge](float x) {
        if (x > 1.0F - edge) {
            return (x + 1.0F) * 0.5F;
        }
        if (x < edge - 1.0F) {
            return (x - 1.0F) * 0.5F;
        }
        if (x > shift) {
            return x + shift;
        }
        if (x < -shift) {
            return x - shift;
        }
        return 2.0F * x;
    });
}

}  // namespace audio_filter::internal
