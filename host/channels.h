#pragma once

#include <string>
#include <vector>

/// The most channels that a recording may have.
constexpr int kMostChannels = 8;

/// "mono", "stereo", "6 channels".
std::string ChannelsName(int channels);

/// Why a recording of more channels is refused.
std::string TooManyChannels(int channels);

/// Converts interleaved samples to another number of channels, in the order of WAV files: to mono by the
/// mean; mono to both front channels; to stereo by a downmix that cannot clip, without the low-frequency
/// channel; otherwise by dropping the last channels, or adding silent ones.
std::vector<float> ConvertChannels(std::vector<float> samples, int from, int to);
