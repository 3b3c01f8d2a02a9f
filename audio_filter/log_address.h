#pragma once

#include <cstdint>

namespace audio_filter::internal {

/// An address as log lines print it through %d: its low 32 bits.
inline int LogAddress(const void* address) {
    return static_cast<int>(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(address)));
}

}  // namespace audio_filter::internal
