#pragma once

#include <cstdint>

/// What AudioFilter::SetParameter sets; only the field of the kind that is named counts.
struct ProcessParam {
    float gain = 0.0F;       ///< of AP_GAIN, 0..1
    std::int32_t level = 0;  ///< of AP_DENOISE, 0 mild .. 3 most aggressive
};
