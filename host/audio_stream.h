#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "host/audio_format.h"

/// Where a stream comes from.
class AudioSource {
public:
    virtual ~AudioSource() = default;

    virtual const AudioFormat& Format() const = 0;

    /// Length, where it is known.
    virtual std::optional<std::int64_t> Frames() const = 0;

    /// Reads up to `frames` frames: as floats, which reach full scale at 1 whatever the format's
    /// kind, or as samples of the format's kind.
    /// @return frames read; 0 at the end
    virtual std::size_t Read(short* samples, std::size_t frames) = 0;
    virtual std::size_t Read(float* samples, std::size_t frames) = 0;
};

/// Where a stream goes.
class AudioSink {
public:
    virtual ~AudioSink() = default;

    /// Samples of the sink's kind.
    virtual void Write(const short* samples, std::size_t frames) = 0;
    virtual void Write(const float* samples, std::size_t frames) = 0;

    /// Ends the stream. Without it, nothing may be left.
    virtual void Commit() = 0;
};
