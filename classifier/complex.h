#pragma once

#include "common/export.h"

/// A complex number in single precision; 0 from construction on.
class AUDIO_FILTER_API complex {
public:
    complex() = default;
    complex(float realPart, float imaginaryPart) : real(realPart), imag(imaginaryPart) {}

    float real = 0.0F;
    float imag = 0.0F;
};

inline complex operator+(complex a, complex b) {
    return {a.real + b.real, a.imag + b.imag};
}

inline complex operator-(complex a, complex b) {
    return {a.real - b.real, a.imag - b.imag};
}

inline complex operator*(complex a, complex b) {
    return {a.real * b.real - a.imag * b.imag, a.real * b.imag + a.imag * b.real};
}
