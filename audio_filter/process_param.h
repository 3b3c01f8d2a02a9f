#pragma once

#include <cstdint>

/// The parameters of AudioFilter::SetParameter, which reads only the field of the given kind.
struct ProcessParam {
    float gain = 0.0F;       ///< of AP_GAIN, 0..1
    std::int32_t level = 0;  ///< of AP_DENOISE, 0 mild .. 3 most aggressive
};
