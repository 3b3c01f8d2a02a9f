#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/audio_format.h"
#include "host/clean.h"
#include "host/filter_settings.h"

/// What cleaning would do with a file.
struct CleaningInfo {
    FilterSettings settings;  ///< in effect at the start
    int suppressorRate;       ///< Hz
    int blockFrames;          ///< frames that the stream processes together
    int latency;              ///< frames, removed from the output
};

/// What is in a file.
struct FileInfo {
    std::string path;
    std::string problem;  ///< why it cannot be read or cleaned, in one line; empty for none
    std::vector<std::string> warnings;
    std::string container;             ///< empty if it cannot be read, like all that follows
    std::vector<std::string> streams;  ///< of a media file, such as "audio aac"
    std::string
        libraryFormat;  ///< the container and the codec as libsndfile names them; empty for a media file
    std::string libraryCodec;
    AudioFormat format = {};               ///< as it is processed
    std::optional<std::int64_t> frames;    ///< none where the file does not state them
    std::optional<CleaningInfo> cleaning;  ///< none if it cannot be cleaned
};

/// Reads the header of a file.
/// @param job the settings and how to read
/// @param scans whether to read the file to its end, which finds damage and unstated lengths
FileInfo Inspect(const std::string& path, const CleanJob& job, bool scans);
