#pragma once

#include <memory>
#include <string>

#include "host/audio_stream.h"
#include "host/read_options.h"

/// Opens an audio track of a regular file: of WAV, FLAC, Ogg and their like by AudioReader, of others as a media file.
/// Throws Failure.
/// @param track counts audio tracks from 1; 0 for the default one
/// @param name in messages
std::unique_ptr<AudioSource> OpenRecording(const std::string& path, int track,
                                           const ReadOptions& options, const std::string& name);
