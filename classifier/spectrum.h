#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "classifier/butterflies.h"
#include "classifier/split_complex.h"
#include "classifier/twiddle_factors.h"

namespace audio_filter::internal {

/// The magnitudes of the music detector's radix-2 transform. For a power of two it is a discrete
/// Fourier transform. For other sizes, which the detector uses deliberately, the index table has the
/// bit length of the size and butterflies reach past the signal into zeros: the result is not a
/// Fourier transform, but the cluster centres were measured with it.
///
/// With n the largest power of two not above the size, element i is the sample at the bit reversal
/// of i % n, and 0 from the size on. The elements from n on thus repeat the first ones, and each
/// stage recomputes only the blocks around the point where the repetition ends.
///
/// Single precision throughout. Memory is allocated once; the twiddle factors are shared by all
/// transforms of the same n. Supports one thread at a time.
class SpectrumTransform {
public:
    /// Throws std::bad_alloc when memory runs out.
    explicit SpectrumTransform(std::size_t size);

    std::size_t Size() const { return mSize; }

    /// Never allocates.
    /// @param signal its first `size` samples are transformed, missing ones as zeros
    /// @param first the first bin of the result
    /// @param magnitudes output: the bins from `first` on, at most up to bin size / 2
    void Run(std::span<const float> signal, std::size_t first, std::span<float> magnitudes);

private:
    float Sample(std::size_t element) const;
    void RunSmall(std::size_t first, std::span<float> magnitudes);
    void Leaves();
    void LeafRows(std::size_t column, float (*real)[kLanes]) const;
    void Finish(std::size_t start, std::size_t repeated);
    void FinishRepeated(std::size_t start, std::size_t length, std::size_t repeated);

    std::size_t mSize;
    unsigned int mBits;   ///< bits of an index
    std::size_t mLength;  ///< n
    std::size_t mLeaf;    ///< elements of a block in which the first stages run
    std::shared_ptr<const TwiddleFactors> mTwiddles;
    ConstSplitComplex mW;
    SplitComplexArray mElements;  ///< the first n, then n / 2 of the repetition
    SplitComplex mFirst;
    std::span<const float> mSignal;
};

/// The magnitudes of the first bins, by a temporary transform. Throws std::bad_alloc when memory runs
/// out.
void Spectrum(std::span<const float> signal, std::size_t size, std::span<float> magnitudes);

}  // namespace audio_filter::internal
