#pragma once

#include "common/export.h"

/// A complex number in single precision; 0 from construction on.
class AUDIO_FILTER_API complex {
public:
    /// [any] 0.
    complex() = default;
    /// [any] Of two parts.
    complex(float realPart, float imaginaryPart) : real(realPart), imag(imaginaryPart) {}

    float real = 0.0F;  ///< real part
    float imag = 0.0F;  ///< imaginary part
};

/// [any] The sum.
inline complex operator+(complex a, complex b) {
    return {a.real + b.real, a.imag + b.imag};
}

/// [any] The difference.
inline complex operator-(complex a, complex b) {
    return {a.real - b.real, a.imag - b.imag};
}

/// [any] The product.
inline complex operator*(complex a, complex b) {
    return {a.real * b.real - a.imag * b.imag, a.real * b.imag + a.imag * b.real};
}
