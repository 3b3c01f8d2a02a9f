#pragma once

#include <cstddef>
#include <memory>

#include "classifier/butterflies.h"
#include "classifier/split_complex.h"

namespace audio_filter::internal {

/// The rotations of every stage of the classifier's transform. A stage whose butterflies are `half`
/// elements wide has `half` of them, from element `half` on: 1, and then each the one before times
/// exp(i * pi / half), in single precision. What rounding adds up to on the way is part of the
/// transform.
class TwiddleFactors {
public:
    /// For the stages of 1, 2, 4 .. `widest`, which is a power of two. The same table for everyone
    /// who asks while somebody holds it. From any thread; throws std::bad_alloc when memory runs
    /// out.
    static std::shared_ptr<const TwiddleFactors> UpTo(std::size_t widest);

    explicit TwiddleFactors(std::size_t widest);

    ConstSplitComplex Table() const { return mTable.Begin(); }

private:
    SplitComplexArray mTable;
};

}  // namespace audio_filter::internal
