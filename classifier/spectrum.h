#pragma once

#include <cstddef>
#include <span>

/// Magnitudes of the classifier's radix-2 transform. Of a power of two, that is a discrete Fourier
/// transform. It is used for other sizes, too, on purpose: there the index table has the bit length
/// of the size, butterflies reach past the signal into zeros, and what comes out is no Fourier
/// transform but what the classifier's centres have been measured with.
///
/// Single precision throughout. Throws std::bad_alloc when memory runs out.
/// @param signal its first `size` samples are transformed; missing ones are zeros
/// @param magnitudes the first size / 2 + 1 elements, or fewer
void Spectrum(std::span<const float> signal, std::size_t size, std::span<float> magnitudes);
