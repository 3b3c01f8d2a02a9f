#include "stream/mixer.h"

#include <algorithm>
#include <cmath>

namespace audio_filter::internal {

double LimitMix(double sum) {
    if (!std::isfinite(sum)) {
        return 0.0;
    }
    const double magnitude = std::min(std::abs(sum), 5.0);
    const double whole = std::min(std::floor(magnitude), 4.0);
    const double limited =
        1.0 + std::ldexp(7.0 * (magnitude - whole) - 8.0, -3 * (static_cast<int>(whole) + 1));
    return std::copysign(limited, sum);
}

float LimitMixS16(double sum) {
    return static_cast<float>(std::trunc(LimitMix(sum) * 32768.0) / 32768.0);
}

}  // namespace audio_filter::internal
