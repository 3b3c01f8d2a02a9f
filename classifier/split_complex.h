#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace audio_filter::internal {

/// An array of complex numbers in split-complex form: real and imaginary parts in separate arrays.
struct SplitComplex {
    float* real;
    float* imag;

    SplitComplex operator+(std::size_t offset) const { return {real + offset, imag + offset}; }
};

struct ConstSplitComplex {
    const float* real;
    const float* imag;

    ConstSplitComplex operator+(std::size_t offset) const { return {real + offset, imag + offset}; }
};

/// A split-complex array that starts at a given offset within a memory page. The transform traverses
/// several arrays in parallel, with strides that are powers of two; arrays at equal page offsets
/// would evict each other from the cache.
class SplitComplexArray {
public:
    /// Page offsets in floats. The imaginary parts are offset by another quarter page.
    static constexpr std::size_t kPage = 1024;
    static constexpr std::size_t kElements = 0;
    static constexpr std::size_t kTwiddles = kPage / 2;

    /// Zeros. Throws std::bad_alloc when memory runs out.
    SplitComplexArray(std::size_t size, std::size_t offset)
        : mFloats(2 * size + 2 * kPage),
          mReal(AtOffset(mFloats.data(), offset)),
          mImag(AtOffset(mReal + size, offset + kPage / 4)) {}
    SplitComplexArray(const SplitComplexArray&) = delete;
    SplitComplexArray& operator=(const SplitComplexArray&) = delete;

    SplitComplex Begin() { return {mReal, mImag}; }
    ConstSplitComplex Begin() const { return {mReal, mImag}; }

private:
    /// The next float at a page offset.
    static float* AtOffset(float* from, std::size_t offset) {
        const std::uintptr_t here = reinterpret_cast<std::uintptr_t>(from) / sizeof(float);
        return from + (offset + kPage - here % kPage) % kPage;
    }

    std::vector<float> mFloats;
    float* mReal;
    float* mImag;
};

}  // namespace audio_filter::internal
