#pragma once

#include <string>
#include <vector>

/// Encodes a sound as Opus in Ogg, which browsers play.
/// @param samples interleaved frames of 1 or 2 channels
/// @param bitsPerSecond is approached within the limits of the format
/// @return the bytes of the file. Throws Failure.
std::string EncodeOpus(const std::vector<short>& samples, int sampleRate, int channels,
                       double bitsPerSecond);
