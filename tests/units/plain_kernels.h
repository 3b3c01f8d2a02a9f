#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "common/pcm_view.h"
#include "units/gain_curve.h"
#include "units/mix_limiter.h"
#include "units/phase_statistics.h"

using namespace audio_filter::internal;

/// Reference kernels, sample by sample and with branches. Every level of the real ones is compared
/// with them.
namespace plain {

template <typename Sample, typename Curve>
void Map(PcmView<Sample> samples, Curve curve) {
    for (std::size_t i = 0; i < samples.Size(); ++i) {
        samples.Set(i, curve(samples.Get(i)));
    }
}

inline void Gain(const GainCurveS16& curve, PcmView<short> samples) {
    Map(samples, [&curve](int x) {
        int y = x * curve.innerSlope;
        if (x > curve.knee) {
            y = (x - curve.knee) * curve.outerSlope + curve.offset;
        } else if (x < -curve.knee) {
            y = (x + curve.knee) * curve.outerSlope - curve.offset;
        }
        return static_cast<short>(std::clamp(y >> 10, -32768, 32767));
    });
}

inline void Gain(const GainCurveFloat& curve, PcmView<float> samples) {
    Map(samples, [&curve](float x) {
        float y = x * curve.innerSlope;
        if (x > curve.knee) {
            y = (x - curve.knee) * curve.outerSlope + curve.offset;
        } else if (x < -curve.knee) {
            y = (x + curve.knee) * curve.outerSlope - curve.offset;
        }
        return std::min(1.0F, std::max(-1.0F, y));  // a NaN becomes -1
    });
}

/// To nearest, halves away from zero, saturated; -32768 for NaN.
inline short Round(float sample) {
    if (std::isnan(sample)) {
        return -32768;
    }
    return static_cast<short>(std::lround(std::clamp(sample, -32768.0F, 32767.0F)));
}

/// The limiter from a table of its slopes and where they start.
inline short Limit(int sum) {
    constexpr int kShift[5] = {3, 6, 9, 12, 15};
    constexpr int kOffset[5] = {0, 28672, 32256, 32704, 32760};
    const int magnitude = sum < 0 ? -sum : sum;
    const int slope = std::min(magnitude >> 15, 4);
    const int limited = (((magnitude & 0x7FFF) * 7) >> kShift[slope]) + kOffset[slope];
    return static_cast<short>(sum < 0 ? -limited : limited);
}

inline short ToMixer(short sample) {
    return sample;
}
inline short ToMixer(float sample) {
    const float scaled = sample * 32767.0F;
    const bool fits = scaled >= -2147483648.0F && scaled < 2147483648.0F;
    return static_cast<short>(fits ? static_cast<int>(scaled) : 0);
}

template <typename Sample>
void Mix(const short* rows, std::size_t stride, std::size_t count, PcmView<Sample> out) {
    for (std::size_t i = 0; i < out.Size(); ++i) {
        int sum = 0;
        for (std::size_t k = 0; k < count; ++k) {
            sum += rows[k * stride + i];
        }
        if constexpr (sizeof(Sample) == 2) {
            out.Set(i, Limit(sum));
        } else {
            out.Set(i, static_cast<float>(Limit(sum)) / 32767.0F);
        }
    }
}

template <typename Sample>
PhaseCounts CountPhases(PcmView<Sample> samples, const StereoLayout& layout, bool negateLeft) {
    PhaseCounts counts;
    ForEachFrame(samples, layout, negateLeft, [&counts](Sample left, Sample right) {
        if (IsSilent(left, right)) {
            ++counts.silent;
        } else if (IsInPhase(left, right)) {
            ++counts.inPhase;
        } else {
            ++counts.opposed;
        }
    });
    return counts;
}

}  // namespace plain
