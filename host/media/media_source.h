#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/audio_stream.h"
#include "host/read_options.h"

/// Opens an audio track of a file that libsndfile does not read. Throws Failure, also if this build lacks
/// AUDIO_FILTER_MEDIA.
/// @param track counts audio tracks from 1; 0 for the default one
/// @param name in messages
std::unique_ptr<AudioSource> OpenMediaSource(const std::string& path, int track,
                                             const ReadOptions& options, const std::string& name);

/// A media file, in words.
struct MediaInfo {
    std::string container;
    std::vector<std::string> streams;  ///< such as "video h264" and "audio aac"
};

/// Throws Failure. @return nothing if this build lacks AUDIO_FILTER_MEDIA
MediaInfo DescribeMedia(const std::string& path);

/// The number of audio tracks of a media file; 1 if this build lacks AUDIO_FILTER_MEDIA.
int CountAudioTracks(const std::string& path);

/// Whether a file that begins with these bytes may be a media file; false if this build lacks AUDIO_FILTER_MEDIA.
bool BeginsLikeMedia(const std::string& start);
