#pragma once

#include <cstddef>

#include "classifier/split_complex.h"

namespace audio_filter::internal {

/// The butterflies of the classifier's transform, over whole blocks, with real and imaginary parts
/// apart so that neighbouring ones are worked out side by side. Every one is
///
///     t = e[k + half] * w;  e[k + half] = e[k] - t;  e[k] = e[k] + t
///
/// in single precision, however many stages a walk through memory takes. Nothing divides, so the
/// sign of a zero can reach no more than the sign of another zero, and a magnitude has lost it: a
/// butterfly with a zero for e[k + half] may leave e[k] as it is. One with both zero changes
/// nothing at all, as rotations are finite.
///
/// `w` are the rotations of all stages: those of a stage from element `half` on.

/// Elements that are worked out side by side before they are written where they belong.
inline constexpr std::size_t kLanes = 16;
using Row = float[kLanes];

/// The stages 1 .. length / 2, one by one: the plain walk.
/// @param length a power of two
void AllStages(SplitComplex e, std::size_t length, ConstSplitComplex w);

/// The stages `quarter` and 2 * quarter of 4 * quarter elements.
void TwoStages(SplitComplex e, std::size_t quarter, ConstSplitComplex w);

/// Stage 1 of `rows` rows of real numbers, each lane a transform of its own.
/// @param imag is only written
void RowStage(Row* real, Row* imag, std::size_t rows);

/// The stages `quarter` and 2 * quarter of `rows` rows.
void TwoRowStages(Row* real, Row* imag, std::size_t rows, std::size_t quarter, ConstSplitComplex w);

/// The magnitudes after the last two stages, `half` and 2 * half, of 4 * half elements of which the
/// second half repeats the first, but breaks off into zeros. Bins are 0 .. 2 * half - 1.
/// @param e the first 2 * half elements
/// @param cut the half of the repetition that breaks off: its second half, or its first one where
///        the second is nothing but zeros
/// @param magnitudes of the bins begin .. end - 1
void LastTwoStages(ConstSplitComplex e, std::size_t half, ConstSplitComplex cut, bool cutIsSecond,
                   ConstSplitComplex w, std::size_t begin, std::size_t end, float* magnitudes);

}  // namespace audio_filter::internal
