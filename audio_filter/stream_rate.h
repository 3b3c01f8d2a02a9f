#pragma once

#include <cstdint>

/// @file
/// How AudioFilter treats the sample rate of a stream. These functions are the only definition of the
/// rules; hosts may use them to predict the effect of Init. [any]

/// The rates at which music detection runs, and which the suppressor processes as if 32000 Hz.
constexpr bool DetectsMusicAt(int sampleRate) {
    return sampleRate >= 32000 && sampleRate <= 44100;
}

/// Whether noise suppression needs the host to resample: Process then returns
/// RESULT_NEEDS_RESAMPLING.
constexpr bool NeedsResampling(int sampleRate) {
    return !DetectsMusicAt(sampleRate) && sampleRate != 8000 && sampleRate != 16000;
}

/// The rate at which the suppressor runs, in Hz: 8000, 16000 or 32000. Where the stream has to be
/// resampled, this is the rate that ProcessResample expects.
constexpr std::int32_t SuppressorRate(int sampleRate) {
    return sampleRate > 16000 ? 32000 : sampleRate > 8000 ? 16000 : 8000;
}
