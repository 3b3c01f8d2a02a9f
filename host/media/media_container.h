#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/media/libav.h"
#include "host/output_options.h"

/// A container that libavformat writes.
struct MediaContainer {
    const char* extension;
    const char* muxer;
    const char* name;  ///< in messages
    AVCodecID usual;   ///< the audio codec, unless told
    bool holdsVideo;   ///< and whatever else is in a file
    bool holdsTracks;  ///< more than one of audio
};

/// The container for a path, by its extension; null for none.
const MediaContainer* MediaContainerOf(const std::string& path);

/// Whether the container can hold a codec.
bool CanHold(const MediaContainer& container, AVCodecID codec);

/// The encoder for a track.
struct EncoderChoice {
    const AVCodec* codec;
    AVSampleFormat samples;
    int bitsPerSample;  ///< of lossless codecs; 0 for the others
    int sampleRate;     ///< Hz
    std::int64_t bitRate;
};

/// What is known about the track to encode.
struct TrackFacts {
    AVCodecID codec;  ///< AV_CODEC_ID_NONE if it has none
    int sampleRate;
    int channels;
    bool isWide;           ///< more than 16 bits
    std::int64_t bitRate;  ///< 0 if unknown or lossless
};

/// Chooses an encoder. Throws Failure, with `path` as its subject, if the container cannot hold what is wanted.
EncoderChoice ChooseEncoder(const std::string& path, const MediaContainer& container,
                            const TrackFacts& track, const OutputOptions& options);
