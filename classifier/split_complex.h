#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace audio_filter::internal {

/// Complex numbers, real and imaginary parts apart.
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

/// Complex numbers, real and imaginary parts apart, from certain places of a memory page on. Walks
/// go through several arrays at the same pace, over blocks that are powers of two apart; arrays
/// that began at the same place of a page would drive each other from the cache.
class SplitComplexArray {
public:
    /// Places in a page, in floats. The imaginary parts follow a quarter page behind.
    static constexpr std::size_t kPage = 1024;
    static constexpr std::size_t kElements = 0;
    static constexpr std::size_t kTwiddles = kPage / 2;

    /// Zeros. Throws std::bad_alloc when memory runs out.
    SplitComplexArray(std::size_t size, std::size_t place)
        : mFloats(2 * size + 2 * kPage),
          mReal(AtPlace(mFloats.data(), place)),
          mImag(AtPlace(mReal + size, place + kPage / 4)) {}
    SplitComplexArray(const SplitComplexArray&) = delete;
    SplitComplexArray& operator=(const SplitComplexArray&) = delete;

    SplitComplex Begin() { return {mReal, mImag}; }
    ConstSplitComplex Begin() const { return {mReal, mImag}; }

private:
    /// The next float at a place.
    static float* AtPlace(float* from, std::size_t place) {
        const std::uintptr_t here = reinterpret_cast<std::uintptr_t>(from) / sizeof(float);
        return from + (place + kPage - here % kPage) % kPage;
    }

    std::vector<float> mFloats;
    float* mReal;
    float* mImag;
};

}  // namespace audio_filter::internal
