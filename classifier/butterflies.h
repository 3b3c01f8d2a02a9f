#pragma once

#include <cstddef>

#include "classifier/split_complex.h"

namespace audio_filter::internal {

/// The butterflies of the music detector's transform, over whole blocks in split-complex form, so
/// that neighbouring ones vectorise. Each is
///
///     t = e[k + half] * w;  e[k + half] = e[k] - t;  e[k] = e[k] + t
///
/// in single precision, however many stages one pass through memory covers. There is no division, so
/// the sign of a zero can only affect the sign of another zero, which a magnitude discards: a
/// butterfly whose e[k + half] is zero may leave e[k] unchanged. One whose inputs are both zero has
/// no effect, because twiddle factors are finite.
///
/// `w` holds the twiddle factors of all stages, those of a stage at index `half` and up.

/// Elements that are computed together before they are written to their final positions.
inline constexpr std::size_t kLanes = 16;
using Row = float[kLanes];

/// The stages 1 .. length / 2, one at a time: the reference.
/// @param length a power of two
void AllStages(SplitComplex e, std::size_t length, ConstSplitComplex w);

/// The stages `quarter` and 2 * quarter of 4 * quarter elements.
void TwoStages(SplitComplex e, std::size_t quarter, ConstSplitComplex w);

/// Stage 1 of `rows` rows of real numbers; each lane is a separate transform.
/// @param imag output only
void RowStage(Row* real, Row* imag, std::size_t rows);

/// The stages `quarter` and 2 * quarter of `rows` rows.
void TwoRowStages(Row* real, Row* imag, std::size_t rows, std::size_t quarter, ConstSplitComplex w);

/// The magnitudes after the last two stages, `half` and 2 * half, of 4 * half elements whose second
/// half repeats the first up to a point and is zero from there on. Bins are 0 .. 2 * half - 1.
/// @param e the first 2 * half elements
/// @param cut the half of the repetition in which it ends: the second half, or the first one if the
///        second is all zeros
/// @param magnitudes of the bins begin .. end - 1
void LastTwoStages(ConstSplitComplex e, std::size_t half, ConstSplitComplex cut, bool cutIsSecond,
                   ConstSplitComplex w, std::size_t begin, std::size_t end, float* magnitudes);

}  // namespace audio_filter::internal
