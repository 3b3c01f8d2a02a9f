#pragma once

#include <cstddef>

#include "common/pcm_view.h"

namespace audio_filter::internal {

/// Conversion between interleaved stereo and two channels, at any address.

template <typename Sample>
void Deinterleave(const void* stereo, std::size_t frames, void* left, void* right) {
    const PcmView<const Sample> both(stereo, 2 * frames);
    PcmView<Sample> l(left, frames);
    PcmView<Sample> r(right, frames);
    for (std::size_t i = 0; i < frames; ++i) {
        l.Set(i, both.Get(2 * i));
        r.Set(i, both.Get(2 * i + 1));
    }
}

template <typename Sample>
void Interleave(const void* left, const void* right, std::size_t frames, void* stereo) {
    const PcmView<const Sample> l(left, frames);
    const PcmView<const Sample> r(right, frames);
    PcmView<Sample> both(stereo, 2 * frames);
    for (std::size_t i = 0; i < frames; ++i) {
        both.Set(2 * i, l.Get(i));
        both.Set(2 * i + 1, r.Get(i));
    }
}

}  // namespace audio_filter::internal
