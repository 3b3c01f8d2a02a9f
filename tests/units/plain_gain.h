#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

// Reference model of the AudioGain curves, sample by sample, with its own truncation and shifts.

/// The 16-bit curve.
inline short PlainGain(float gain, int x) {
    volatile float product = gain * 8191.0F;  // each step rounded on its own
    volatile float kneeValue = 16383.0F - product;
    const auto knee = static_cast<std::int64_t>(kneeValue);
    const std::int64_t lifted = 32767 - knee;
    const std::int64_t inner = (lifted * 1024 - (lifted * 1024) % knee) / knee;
    const std::int64_t outer = (knee * 1024 - (knee * 1024) % lifted) / lifted;
    const std::int64_t magnitude = std::abs(x);
    std::int64_t y =
        magnitude <= knee ? magnitude * inner : (magnitude - knee) * outer + knee * inner;
    if (x < 0) {
        y = -y;
    }
    const auto shifted = static_cast<std::int64_t>(std::floor(static_cast<double>(y) / 1024.0));
    return static_cast<short>(
        std::min<std::int64_t>(std::max<std::int64_t>(shifted, -32768), 32767));
}

/// Within -1..1, and -1 for a NaN.
inline float PlainBound(float y) {
    if (y > 1.0F) {
        return 1.0F;
    }
    return y >= -1.0F ? y : -1.0F;
}

/// The float curve, every intermediate stored in single precision.
inline float PlainGain(float gain, float x) {
    const float knee = static_cast<float>(0.5 - static_cast<double>(gain) * 0.25);
    const volatile float rest = 1.0F - knee;
    const volatile float inner = rest / knee;
    const volatile float atKnee = inner * knee;
    const volatile float outer = 1.0F / inner;
    volatile float y = x * inner;
    if (x > knee) {
        y = x - knee;
        y = y * outer;
        y = y + atKnee;
    }
    if (x < -knee) {
        y = x + knee;
        y = y * outer;
        y = y - atKnee;
    }
    return PlainBound(y);
}

/// The alternative with three slopes, at 16 bits.
inline short PlainThreeSlopeGain(float gain, int x) {
    const volatile float product = gain * 10922.0F;
    const int h = static_cast<int>(product);
    double y = 2.0 * x;
    if (x > 32767 - 2 * h) {
        y = std::trunc((x + 32767) / 2.0);
    } else if (x < 2 * h - 32768) {
        y = std::trunc((x - 32768) / 2.0);
    } else if (std::abs(x) > h) {
        y = x > 0 ? x + h : x - h;
    }
    return static_cast<short>(std::min(32767.0, std::max(-32768.0, y)));
}

/// The same in float.
inline float PlainThreeSlopeGain(float gain, float x) {
    const auto third = static_cast<float>(static_cast<double>(gain) * 0.3333333333333333);
    const volatile float edge = 2.0F * third;
    const volatile float upper = 1.0F - edge;
    const volatile float lower = edge - 1.0F;
    volatile float y = 2.0F * x;
    if (x > upper) {
        y = x + 1.0F;
        y = y * 0.5F;
    } else if (x < lower) {
        y = x - 1.0F;
        y = y * 0.5F;
    } else if (x > third) {
        y = x + third;
    } else if (x < -third) {
        y = x - third;
    }
    return PlainBound(y);
}
