#pragma once

#include <cstddef>
#include <memory>

#include "classifier/split_complex.h"

namespace audio_filter::internal {

/// The twiddle factors of every stage of the music detector's transform. The stage whose butterflies
/// span `half` elements has `half` factors, at index `half` and up: 1, then each the previous one
/// times exp(i * pi / half), in single precision. The accumulated rounding is part of the transform.
class TwiddleFactors {
public:
    /// The widest stage whose table is shared: that of the transforms at 44100 and 48000 Hz.
    static constexpr std::size_t kWidestShared = 65536;

    /// The table for the stages 1, 2, 4 .. `widest`, a power of two. Tables up to kWidestShared are
    /// built once, shared by all threads without a lock, and kept until the process ends; a wider
    /// one belongs to the caller. From any thread; throws std::bad_alloc when memory runs out.
    static std::shared_ptr<const TwiddleFactors> UpTo(std::size_t widest);

    explicit TwiddleFactors(std::size_t widest);

    ConstSplitComplex Table() const { return mTable.Begin(); }

private:
    SplitComplexArray mTable;
};

}  // namespace audio_filter::internal
