#pragma once

#include <cstdint>

#include "stream/stream_types.h"

namespace audio_filter::internal {

/// Settings in 64 bits, so that one atomic variable holds them: clamped, from the lowest bit on the
/// level + 1 (3 bits), phase check, mix, music, gain on, high band, 8 unused, the reversed sources (16), the gain (32).
std::uint64_t Pack(const StreamSettings& settings);
StreamSettings Unpack(std::uint64_t packed);

}  // namespace audio_filter::internal
