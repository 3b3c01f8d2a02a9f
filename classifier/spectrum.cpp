#include "classifier/spectrum.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

#include "classifier/complex.h"

namespace {

/// Where each element comes from.
std::vector<std::size_t> IndexTable(std::size_t size) {
    std::vector<std::size_t> table(size);
    const int bits = std::max(static_cast<int>(std::bit_width(size)), 2);
    for (std::size_t i = 1; i < size; ++i) {
        table[i] = (table[i >> 1] >> 1) | ((i & 1) << (bits - 2));
    }
    return table;
}

/// All butterflies of one stage. They may reach up to twice past the size.
void Stage(std::vector<complex>& elements, std::size_t size, std::size_t half) {
    const float angle = std::acos(-1.0F) / static_cast<float>(half);
    const complex rotation(std::cos(angle), std::sin(angle));
    for (std::size_t start = 0; start < size; start += 2 * half) {
        complex w(1.0F, 0.0F);
        for (std::size_t k = start; k < start + half; ++k) {
            const complex t = elements[k + half] * w;
            elements[k + half] = elements[k] - t;
            elements[k] = elements[k] + t;
            w = w * rotation;
        }
    }
}

}  // namespace

void Spectrum(std::span<const float> signal, std::size_t size, std::span<float> magnitudes) {
    const std::vector<std::size_t> source = IndexTable(size);
    std::vector<complex> elements(3 * size + 1);  // a transform of nothing has one element, too
    for (std::size_t i = 0; i < size; ++i) {
        elements[i].real = source[i] < signal.size() ? signal[source[i]] : 0.0F;
    }
    for (std::size_t half = 1; half < size; half *= 2) {
        Stage(elements, size, half);
    }
    std::transform(elements.begin(),
                   elements.begin() + static_cast<std::ptrdiff_t>(magnitudes.size()),
                   magnitudes.begin(), [](complex element) {
                       return std::sqrt(element.real * element.real + element.imag * element.imag);
                   });
}
