#pragma once

#include <istream>

/// What the chunks of a WAV file (RIFF, RIFX or RF64) say of it before it is decoded.
struct WavChunks {
    bool cut = false;   ///< the file ends before its audio does
    bool mpeg = false;  ///< the audio is coded as MPEG audio
};

/// Walks the chunks up to the audio. Whatever stands in them, nothing but the file is read.
WavChunks WalkWavChunks(std::istream& file);
