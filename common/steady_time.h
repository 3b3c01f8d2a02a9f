#pragma once

#include <chrono>

namespace audio_filter::internal {

/// Milliseconds of a monotonic clock.
inline unsigned long long SteadyMilliseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
    return static_cast<unsigned long long>(nanoseconds) / 1'000'000;
}

}  // namespace audio_filter::internal
