#pragma once

#include "common/media_process.h"

namespace audio_filter::internal {

/// Properties of a sample format. They take any number, because a SampleFmt can hold any.

/// Bytes per sample; 0 for a number that is no format.
constexpr int SampleByteSize(int fmt) {
    constexpr int kBytes[10] = {1, 2, 4, 4, 8, 1, 2, 4, 4, 8};
    return fmt < SAMPLE_FMT_U8 || fmt > SAMPLE_FMT_DBLP ? 0 : kBytes[fmt];
}

constexpr bool IsPlanar(int fmt) {
    return fmt >= SAMPLE_FMT_U8P && fmt <= SAMPLE_FMT_DBLP;
}

/// Signed 16-bit samples, interleaved or planar.
constexpr bool IsS16(int fmt) {
    return fmt == SAMPLE_FMT_S16 || fmt == SAMPLE_FMT_S16P;
}

/// 32-bit float samples, interleaved or planar.
constexpr bool IsFloat(int fmt) {
    return fmt == SAMPLE_FMT_FLT || fmt == SAMPLE_FMT_FLTP;
}

}  // namespace audio_filter::internal
