#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "classifier/butterflies.h"
#include "classifier/split_complex.h"
#include "classifier/twiddle_factors.h"

namespace audio_filter::internal {

/// Magnitudes of the classifier's radix-2 transform. Of a power of two, that is a discrete Fourier
/// transform. It is used for other sizes, too, on purpose: there the index table has the bit length
/// of the size, butterflies reach past the signal into zeros, and what comes out is no Fourier
/// transform but what the classifier's centres have been measured with.
///
/// In other words, with n the largest power of two up to the size: element i comes from sample
/// i % n, its bits in reverse, and is 0 from the size on. So the elements from n on repeat the
/// first ones, and of each stage only the blocks about the break are worked out a second time.
///
/// Single precision throughout. It makes its memory once; the rotations are shared with all others
/// of the same n. One object serves one thread at a time.
class SpectrumTransform {
public:
    /// Throws std::bad_alloc when memory runs out.
    explicit SpectrumTransform(std::size_t size);

    std::size_t Size() const { return mSize; }

    /// Allocates nothing.
    /// @param signal its first `size` samples are transformed; missing ones are zeros
    /// @param first the first bin wanted
    /// @param magnitudes of the bins from there on, at most up to bin size / 2
    void Run(std::span<const float> signal, std::size_t first, std::span<float> magnitudes);

private:
    float Sample(std::size_t element) const;
    void RunSmall(std::size_t first, std::span<float> magnitudes);
    void Leaves();
    void LeafRows(std::size_t column, float (*real)[kLanes]) const;
    void Finish(std::size_t start, std::size_t repeated);
    void FinishRepeated(std::size_t start, std::size_t length, std::size_t repeated);

    std::size_t mSize;
    unsigned int mBits;   ///< of an index
    std::size_t mLength;  ///< n
    std::size_t mLeaf;    ///< elements of the blocks that the first stages are worked out in
    std::shared_ptr<const TwiddleFactors> mTwiddles;
    ConstSplitComplex mW;
    SplitComplexArray mElements;  ///< the first n, and half as many of the repetition
    SplitComplex mFirst;
    std::span<const float> mSignal;
};

/// The magnitudes of all bins, or of the first ones, by a transform made for the purpose. Throws
/// std::bad_alloc when memory runs out.
void Spectrum(std::span<const float> signal, std::size_t size, std::span<float> magnitudes);

}  // namespace audio_filter::internal
