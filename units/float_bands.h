#pragma once

namespace audio_filter::internal {

/// The float twin of the suppressor's band filters: a quadrature mirror pair of two all-pass
/// branches, in double precision, without rounding or saturation between its sections. Each memory
/// holds three sections' previous input and output, six values; zeros are silence.

/// Splits a frame of kBlockSamples into two bands. A sample that is not finite enters as 0: nothing
/// would ever wash it out of the memories.
void SplitBands(const float* frame, float* low, float* high, double* memory1, double* memory2);

/// Merges two bands into a frame.
void MergeBands(const float* low, const float* high, float* frame, double* memory1,
                double* memory2);

}  // namespace audio_filter::internal
