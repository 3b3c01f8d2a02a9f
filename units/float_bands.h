#pragma once

namespace audio_filter::internal {

/// The float version of the suppressor's band filters: a quadrature mirror filter of two all-pass
/// branches, in double precision, without rounding or saturation between sections. Each memory holds
/// the previous input and output of three sections, six values; zeros are silence.

/// Splits kBlockSamples samples into two bands. A sample that is not finite counts as 0: it would
/// never decay from the memories.
void SplitBands(const float* samples, float* low, float* high, double* memory1, double* memory2);

/// Merges two bands into kBlockSamples samples.
void MergeBands(const float* low, const float* high, float* samples, double* memory1,
                double* memory2);

}  // namespace audio_filter::internal
