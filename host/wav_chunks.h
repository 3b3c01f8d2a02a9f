#pragma once

#include <istream>

/// Facts from the chunks of a WAV file (RIFF, RIFX or RF64), without decoding.
struct WavChunks {
    bool cut = false;   ///< the file ends before its audio
    bool mpeg = false;  ///< the audio is MPEG audio
};

/// Reads the chunks up to the audio. Never reads outside the file, even if the chunks claim to.
WavChunks WalkWavChunks(std::istream& file);
