#pragma once

#include <ebur128.h>

#include <memory>

#include "host/audio_format.h"

struct ReleaseLoudnessMeter {
    void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
};

/// A meter of libebur128 that weights the channels by the positions of WAV files.
using LoudnessMeter = std::unique_ptr<ebur128_state, ReleaseLoudnessMeter>;

/// Throws Failure if the rate cannot be measured.
/// @param mode EBUR128_MODE_I, ...
LoudnessMeter MakeLoudnessMeter(const AudioFormat& format, int mode);
