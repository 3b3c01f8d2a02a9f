#include "classifier/butterflies.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "classifier/complex.h"

namespace audio_filter::internal {

// The arrays of a loop never overlap. Without this the compiler does not vectorise it.
#define APART __restrict

namespace {

void Butterfly(complex& low, complex& high, complex w) {
    const complex t = high * w;
    high = low - t;
    low = low + t;
}

/// Two stages of four blocks: the first multiplies b and d by `w`, the second c by `wLow` and d by
/// `wHigh`.
void FourBlocks(complex& a, complex& b, complex& c, complex& d, complex w, complex wLow,
                complex wHigh) {
    Butterfly(a, b, w);
    Butterfly(c, d, w);
    Butterfly(a, c, wLow);
    Butterfly(b, d, wHigh);
}

void OneStage(float* APART real, float* APART imag, float* APART highReal, float* APART highImag,
              const float* APART wReal, const float* APART wImag, std::size_t half) {
    for (std::size_t k = 0; k < half; ++k) {
        complex low(real[k], imag[k]);
        complex high(highReal[k], highImag[k]);
        Butterfly(low, high, {wReal[k], wImag[k]});
        real[k] = low.real;
        imag[k] = low.imag;
        highReal[k] = high.real;
        highImag[k] = high.imag;
    }
}

void QuarterBlocks(float* APART aReal, float* APART aImag, float* APART bReal, float* APART bImag,
                   float* APART cReal, float* APART cImag, float* APART dReal, float* APART dImag,
                   const float* APART wReal, const float* APART wImag, std::size_t quarter) {
    for (std::size_t k = 0; k < quarter; ++k) {
        complex a(aReal[k], aImag[k]);
        complex b(bReal[k], bImag[k]);
        complex c(cReal[k], cImag[k]);
        complex d(dReal[k], dImag[k]);
        FourBlocks(a, b, c, d, {wReal[k], wImag[k]}, {wReal[k + quarter], wImag[k + quarter]},
                   {wReal[k + 2 * quarter], wImag[k + 2 * quarter]});
        aReal[k] = a.real;
        aImag[k] = a.imag;
        bReal[k] = b.real;
        bImag[k] = b.imag;
        cReal[k] = c.real;
        cImag[k] = c.imag;
        dReal[k] = d.real;
        dImag[k] = d.imag;
    }
}

/// Stage 1 of real numbers: the factor is 1, so the real parts stay, and the imaginary parts become
/// 0, or NaN where the number is not finite.
void FirstRows(float* APART lowReal, float* APART lowImag, float* APART highReal,
               float* APART highImag) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        const float low = lowReal[lane];
        const float high = highReal[lane];
        lowReal[lane] = low + high;
        highReal[lane] = low - high;
        lowImag[lane] = high * 0.0F;
        highImag[lane] = high * 0.0F;
    }
}

void QuarterRows(float* APART aReal, float* APART aImag, float* APART bReal, float* APART bImag,
                 float* APART cReal, float* APART cImag, float* APART dReal, float* APART dImag,
                 complex w, complex wLow, complex wHigh) {
    for (std::size_t k = 0; k < kLanes; ++k) {
        complex a(aReal[k], aImag[k]);
        complex b(bReal[k], bImag[k]);
        complex c(cReal[k], cImag[k]);
        complex d(dReal[k], dImag[k]);
        FourBlocks(a, b, c, d, w, wLow, wHigh);
        aReal[k] = a.real;
        aImag[k] = a.imag;
        bReal[k] = b.real;
        bImag[k] = b.imag;
        cReal[k] = c.real;
        cImag[k] = c.imag;
        dReal[k] = d.real;
        dImag[k] = d.imag;
    }
}

/// Half of the bins: those of the sums of stage `half`, or those of its differences.
template <bool kSums, bool kCutIsSecond>
void LastMagnitudes(ConstSplitComplex low, ConstSplitComplex high, ConstSplitComplex cut,
                    ConstSplitComplex w, ConstSplitComplex wLast, std::size_t count,
                    float* APART magnitudes) {
    for (std::size_t k = 0; k < count; ++k) {
        const complex twiddle(w.real[k], w.imag[k]);
        const complex a(low.real[k], low.imag[k]);
        const complex t = complex(high.real[k], high.imag[k]) * twiddle;
        const complex first = kSums ? a + t : a - t;
        complex second(cut.real[k], cut.imag[k]);
        if (kCutIsSecond) {
            const complex u = second * twiddle;
            second = kSums ? a + u : a - u;
        }
        const complex bin = first + second * complex(wLast.real[k], wLast.imag[k]);
        magnitudes[k] = std::sqrt(bin.real * bin.real + bin.imag * bin.imag);
    }
}

template <bool kCutIsSecond>
void LastBins(ConstSplitComplex e, std::size_t half, ConstSplitComplex cut, ConstSplitComplex w,
              std::size_t begin, std::size_t end, float* magnitudes) {
    const auto bins = [&](auto isSums, std::size_t from, std::size_t to, std::size_t bin) {
        if (from < to) {
            LastMagnitudes<decltype(isSums)::value, kCutIsSecond>(
                e + from, e + half + from, cut + from, w + half + from, w + 2 * half + bin,
                to - from, magnitudes + (bin - begin));
        }
    };
    bins(std::true_type(), begin, std::min(end, half), begin);
    const std::size_t beginHigh = std::max(begin, half);
    bins(std::false_type(), beginHigh - half, std::max(end, half) - half, beginHigh);
}

}  // namespace

void AllStages(SplitComplex e, std::size_t length, ConstSplitComplex w) {
    for (std::size_t half = 1; half < length; half *= 2) {
        for (std::size_t start = 0; start < length; start += 2 * half) {
            const SplitComplex low = e + start;
            const SplitComplex high = low + half;
            OneStage(low.real, low.imag, high.real, high.imag, w.real + half, w.imag + half, half);
        }
    }
}

void TwoStages(SplitComplex e, std::size_t quarter, ConstSplitComplex w) {
    const SplitComplex b = e + quarter;
    const SplitComplex c = b + quarter;
    const SplitComplex d = c + quarter;
    QuarterBlocks(e.real, e.imag, b.real, b.imag, c.real, c.imag, d.real, d.imag, w.real + quarter,
                  w.imag + quarter, quarter);
}

void RowStage(Row* real, Row* imag, std::size_t rows) {
    for (std::size_t row = 0; row < rows; row += 2) {
        FirstRows(real[row], imag[row], real[row + 1], imag[row + 1]);
    }
}

void TwoRowStages(Row* real, Row* imag, std::size_t rows, std::size_t quarter,
                  ConstSplitComplex w) {
    const auto twiddle = [w](std::size_t k) { return complex(w.real[k], w.imag[k]); };
    for (std::size_t start = 0; start < rows; start += 4 * quarter) {
        for (std::size_t k = 0; k < quarter; ++k) {
            const std::size_t a = start + k;
            const std::size_t b = a + quarter;
            const std::size_t c = b + quarter;
            const std::size_t d = c + quarter;
            QuarterRows(real[a], imag[a], real[b], imag[b], real[c], imag[c], real[d], imag[d],
                        twiddle(quarter + k), twiddle(2 * quarter + k), twiddle(3 * quarter + k));
        }
    }
}

void LastTwoStages(ConstSplitComplex e, std::size_t half, ConstSplitComplex cut, bool cutIsSecond,
                   ConstSplitComplex w, std::size_t begin, std::size_t end, float* magnitudes) {
    (cutIsSecond ? LastBins<true> : LastBins<false>)(e, half, cut, w, begin, end, magnitudes);
}

}  // namespace audio_filter::internal
