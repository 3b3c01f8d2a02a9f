#pragma once

#include <span>

namespace audio_filter::internal {

/// The soft limiter of AudioMixing (units/mix_limiter.h) without its 16 bits: slopes 7/8, 7/64, 7/512, 7/4096
/// and 7/32768, each over one full scale of the magnitude; flat from five times full scale on. A sum
/// that is not finite becomes 0.
/// @param sum full scale at 1
double LimitMix(double sum);

/// The same for a sum of 16-bit samples, full scale at 1: rounded toward 0 to 16 bits, as AudioMixing rounds.
float LimitMixS16(double sum);

}  // namespace audio_filter::internal
