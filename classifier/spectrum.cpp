#include "classifier/spectrum.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace audio_filter::internal {

namespace {

constexpr std::size_t kWhole = static_cast<std::size_t>(-1);
constexpr unsigned int kSmallestBits = 9;  // smaller transforms run the reference

ConstSplitComplex Constant(SplitComplex e) {
    return {e.real, e.imag};
}

/// The lowest `bits` bits of a number in reverse.
std::size_t Reversed(std::size_t number, unsigned int bits) {
    std::size_t reversed = 0;
    for (unsigned int bit = 0; bit < bits; ++bit) {
        reversed = (reversed << 1) | ((number >> bit) & 1);
    }
    return reversed;
}

/// An even number of stages follows the leaves, because they run in pairs.
std::size_t LeafLength(unsigned int bits) {
    return bits % 2 == 0 ? 32 : 16;
}

}  // namespace

SpectrumTransform::SpectrumTransform(std::size_t size)
    : mSize(size),
      mBits(std::max(static_cast<unsigned int>(std::bit_width(size)), 2U) - 1),
      mLength(std::size_t{1} << mBits),
      mLeaf(LeafLength(mBits)),
      mTwiddles(TwiddleFactors::UpTo(mLength)),
      mW(mTwiddles->Table()),
      mElements(mBits < kSmallestBits ? 2 * mLength : mLength + mLength / 2,
                SplitComplexArray::kElements),
      mFirst(mElements.Begin()) {}

void SpectrumTransform::Run(std::span<const float> signal, std::size_t first,
                            std::span<float> magnitudes) {
    mSignal = signal;
    if (mBits < kSmallestBits) {
        RunSmall(first, magnitudes);
        return;
    }
    Leaves();
    // The repetition ends in one of the halves.
    const std::size_t half = mLength / 2;
    const std::size_t repeated = mSize - mLength;
    const bool second = repeated >= half;
    Finish(0, second ? kWhole : repeated);
    Finish(half, second ? repeated - half : kWhole);
    LastTwoStages(Constant(mFirst), half, Constant(mFirst + mLength), second, mW, first,
                  first + magnitudes.size(), magnitudes.data());
}

/// An element before the first stage.
float SpectrumTransform::Sample(std::size_t element) const {
    const std::size_t source = Reversed(element, mBits);
    return source < mSignal.size() ? mSignal[source] : 0.0F;
}

void SpectrumTransform::RunSmall(std::size_t first, std::span<float> magnitudes) {
    std::fill_n(mFirst.real, 2 * mLength, 0.0F);
    std::fill_n(mFirst.imag, 2 * mLength, 0.0F);
    for (std::size_t i = 0; i < mSize; ++i) {
        mFirst.real[i] = Sample(i);
    }
    AllStages(mFirst, std::bit_ceil(mSize), mW);
    for (std::size_t k = 0; k < magnitudes.size(); ++k) {
        const float real = mFirst.real[first + k];
        const float imag = mFirst.imag[first + k];
        magnitudes[k] = std::sqrt(real * real + imag * imag);
    }
}

/// The first stages of all leaves, kLanes at a time. Neighbouring samples are at the same position
/// of different leaves, so a row of samples is a row of elements.
void SpectrumTransform::Leaves() {
    const auto leafBits = static_cast<unsigned int>(std::countr_zero(mLeaf));
    const std::size_t leaves = mLength / mLeaf;
    Row real[32];
    Row imag[32];
    for (std::size_t column = 0; column < leaves; column += kLanes) {
        LeafRows(column, real);
        std::size_t quarter = 1;
        if (leafBits % 2 == 0) {
            std::fill_n(&imag[0][0], mLeaf * kLanes, 0.0F);
        } else {
            RowStage(real, imag, mLeaf);
            quarter = 2;
        }
        for (; quarter < mLeaf; quarter *= 4) {
            TwoRowStages(real, imag, mLeaf, quarter, mW);
        }
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const SplitComplex leaf = mFirst + Reversed(column + lane, mBits - leafBits) * mLeaf;
            for (std::size_t row = 0; row < mLeaf; ++row) {
                leaf.real[row] = real[row][lane];
                leaf.imag[row] = imag[row][lane];
            }
        }
    }
}

/// The samples of kLanes leaves, missing ones as zeros.
void SpectrumTransform::LeafRows(std::size_t column, float (*real)[kLanes]) const {
    const auto leafBits = static_cast<unsigned int>(std::countr_zero(mLeaf));
    const std::size_t leaves = mLength / mLeaf;
    for (std::size_t row = 0; row < mLeaf; ++row) {
        const std::size_t start =
            std::min(Reversed(row, leafBits) * leaves + column, mSignal.size());
        const std::size_t count = std::min(mSignal.size() - start, kLanes);
        const float* samples = mSignal.data() + start;
        if (count == kLanes) {
            std::copy_n(samples, kLanes, real[row]);
        } else {
            std::fill(std::copy_n(samples, count, real[row]), real[row] + kLanes, 0.0F);
        }
    }
}

/// The remaining stages of a half. A block is completed as soon as its last leaf is, so that small
/// blocks stay in the cache.
/// @param repeated the elements of this half that the repetition contains before it ends; kWhole if
///        it does not end here
void SpectrumTransform::Finish(std::size_t start, std::size_t repeated) {
    for (std::size_t end = mLeaf; end <= mLength / 2; end += mLeaf) {
        for (std::size_t length = mLeaf; end % length == 0; length *= 4) {
            const std::size_t block = end - length;
            if (block <= repeated && repeated < end) {
                FinishRepeated(start + block, length, repeated - block);
            }
            if (length > mLeaf) {
                TwoStages(mFirst + start + block, length / 4, mW);
            }
        }
    }
}

/// The same for the block in which the repetition ends. Its quarters before that point equal those
/// of the block that it repeats, which lack only their last two stages.
void SpectrumTransform::FinishRepeated(std::size_t start, std::size_t length,
                                       std::size_t repeated) {
    const std::size_t half = mLength / 2;
    const SplitComplex from = mFirst + start;
    const SplitComplex to = mFirst + mLength + start % half;
    if (length == mLeaf) {
        for (std::size_t i = 0; i < length; ++i) {
            to.real[i] = i < repeated ? Sample(start + i) : 0.0F;
            to.imag[i] = 0.0F;
        }
        AllStages(to, length, mW);
        return;
    }
    const std::size_t quarter = length / 4;
    const std::size_t whole = repeated / quarter * quarter;
    std::copy_n(from.real, whole, to.real);
    std::copy_n(from.imag, whole, to.imag);
    std::fill(to.real + whole + quarter, to.real + length, 0.0F);
    std::fill(to.imag + whole + quarter, to.imag + length, 0.0F);
    TwoStages(to, quarter, mW);
}

void Spectrum(std::span<const float> signal, std::size_t size, std::span<float> magnitudes) {
    SpectrumTransform(size).Run(signal, 0, magnitudes);
}

}  // namespace audio_filter::internal
