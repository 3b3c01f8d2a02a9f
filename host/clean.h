#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/media_process.h"
#include "host/audio_format.h"
#include "host/block_sizes.h"
#include "host/filter_settings.h"
#include "host/media/media_output.h"
#include "host/progress_bar.h"
#include "host/read_options.h"
#include "log/media_process_log.h"

/// A source to process.
struct InputFile {
    std::string path;  ///< "-" for standard input
    AVSourceType type;
};

/// What to clean, and how.
struct CleanJob {
    std::vector<InputFile> inputs;   ///< 1..16; the output has the format of the first
    std::string output;              ///< "-" for standard output
    bool replace = true;             ///< an output that exists already
    std::optional<AudioFormat> raw;  ///< format of "-"; none for a file in a pipe
    bool wavStream = false;          ///< "-" as output takes a WAV stream instead of raw samples
    int track =
        0;  ///< audio track of the first input: from 1, 0 for the default one, or kAllTracks
    OutputOptions encoding;
    std::shared_ptr<MediaOutput>
        tracks;  ///< the output of all tracks, if this job is one of several
    ReadOptions reading;
    FilterSettings settings;
    std::vector<SettingsChange> changes;  ///< in order of time
    std::optional<double> loudness;       ///< of the output in LUFS; none to leave it
    BlockSizes blockSizes;
    bool summarises = true;   ///< whether the levels are measured
    std::string reportPage;   ///< HTML file about the result; empty for none. Needs the levels
    std::string spectrogram;  ///< PNG file; empty for none
    std::string log;          ///< file for log lines; "-" for standard error, empty for
                              ///< none
    ProcessLogLevel logLevel = PROCESS_LOG_INFO;  ///< the lowest that is written
};

struct Report;

/// Cleans the recordings. The output has the rate and channels of the first input and the length of
/// the longest, and appears when it is complete. Throws Failure and then leaves no file.
Report Clean(const CleanJob& wanted, const ProgressOutput& progress);
