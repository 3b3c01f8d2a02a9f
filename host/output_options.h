#pragma once

#include <optional>
#include <string>

/// Sample formats of lossless outputs.
enum class OutputBits { k16, k24, kFloat };

/// How outputs are encoded.
struct OutputOptions {
    std::string codec;               ///< name of libavcodec, or "pcm"; empty for that of the input
    std::optional<int> bitRate;      ///< bit/s; none for about that of the input
    std::optional<OutputBits> bits;  ///< of lossless codecs; none for that of the input
};

/// Reads "2" or "all" (kAllTracks). @return none for anything else
std::optional<int> ParseTrack(const std::string& text);

/// Reads "128k" or "128000". @return bit/s; none for anything else
std::optional<int> ParseBitRate(const std::string& text);

/// Reads "16", "24" or "float". @return none for anything else
std::optional<OutputBits> ParseBits(const std::string& text);
