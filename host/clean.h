#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "common/media_process.h"
#include "host/audio_format.h"
#include "host/block_sizes.h"
#include "host/filter_settings.h"
#include "host/report.h"

/// Where one source comes from.
struct InputFile {
    std::string path;  ///< "-" for raw samples on standard input
    AVSourceType kind;
};

/// Recordings to be cleaned.
struct CleanJob {
    std::vector<InputFile> inputs;   ///< 1..16; the first gives the output its format
    std::string output;              ///< "-" for raw samples on standard output
    std::optional<AudioFormat> raw;  ///< of what is "-"
    FilterSettings settings;
    std::vector<SettingsChange> changes;  ///< in the order of their times
    BlockSizes blockSizes;
    std::string log;  ///< file for the library's own log lines; empty for none
};

/// Cleans them: the output has the rate and channels of the first input and the length of the
/// longest, and appears when it is whole. Throws Failure, and then leaves nothing.
/// @param progress where the progress bar goes; null for none
Report Clean(const CleanJob& job, std::ostream* progress);
