#pragma once

#include <cstdint>
#include <istream>

/// Facts from the chunks of a WAV file (RIFF, RIFX or RF64), without decoding.
struct WavChunks {
    bool cut = false;               ///< the file ends before its audio does
    bool mpeg = false;              ///< the audio is MPEG audio
    bool unstated = false;          ///< a length of 0 is stated, as crashed recorders leave it
    std::uint64_t audioAt = 0;      ///< position of the audio; 0 if the file ends before it
    std::uint64_t statedBytes = 0;  ///< of audio
};

/// Reads the chunks up to the audio. Never reads outside the file, even if the chunks claim to.
WavChunks WalkWavChunks(std::istream& file);

/// Whether a size stands for an unknown one. Writers that cannot seek back to the header, as in a
/// pipe, leave 0 or about 2 GB or 4 GB. Truncation cannot be detected then.
bool IsUnknownWavSize(std::uint64_t size);
