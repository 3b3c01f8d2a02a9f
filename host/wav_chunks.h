#pragma once

#include <istream>

/// What the chunks of a WAV file (RIFF, RIFX or RF64) tell without decoding.
struct WavChunks {
    bool cut = false;   ///< the file ends before its audio
    bool mpeg = false;  ///< the audio is MPEG audio
};

/// Walks the chunks up to the audio. Never reads outside the file, whatever the chunks claim.
WavChunks WalkWavChunks(std::istream& file);
