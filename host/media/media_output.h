#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/audio_stream.h"
#include "host/output_options.h"
#include "host/read_options.h"

/// Selects every audio track.
constexpr int kAllTracks = -1;

/// A file to write through libavformat.
struct MediaOutputJob {
    std::string path;
    std::string input;  ///< the file whose other streams and tags are kept; empty for none
    int track = 0;      ///< of it that is cleaned: from 1, 0 for the default one, or kAllTracks
    OutputOptions options;
    bool replace = true;  ///< a file that exists already
};

/// A media file with cleaned audio tracks. Everything else is copied from the input: video, subtitles, chapters,
/// attachments, pictures, tags, other audio tracks, with their times. The file appears whole when the last track has
/// been committed, or not at all.
class MediaOutput {
public:
    virtual ~MediaOutput() = default;

    /// The sink for a track. Throws Failure, the first time before anything is written, if the container cannot hold the
    /// track, or any stream to be copied.
    /// @param track of the input, from 1; 0 for the default one
    virtual std::unique_ptr<AudioSink> AddTrack(int track, const AudioFormat& format) = 0;

    /// Remarks on what is not kept.
    virtual const std::vector<std::string>& Notes() const = 0;
};

/// Whether the extension is one of libavformat's outputs.
bool IsMediaOutput(const std::string& path);

/// Throws Failure if the file cannot be written, or if this build lacks AUDIO_FILTER_MEDIA.
std::shared_ptr<MediaOutput> OpenMediaOutput(const MediaOutputJob& job);
