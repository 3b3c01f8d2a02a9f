#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/audio_format.h"

/// A stream to read.
class AudioSource {
public:
    virtual ~AudioSource() = default;

    virtual const AudioFormat& Format() const = 0;

    /// Length in frames, if known.
    virtual std::optional<std::int64_t> Frames() const = 0;

    /// Reads up to `frames` frames, as 16-bit samples (only from a 16-bit stream) or as floats with
    /// full scale at 1 (from any).
    /// @return frames read; 0 at the end
    virtual std::size_t Read(short* samples, std::size_t frames) = 0;
    virtual std::size_t Read(float* samples, std::size_t frames) = 0;
};

/// A stream to write.
class AudioSink {
public:
    virtual ~AudioSink() = default;

    /// Samples of the sink's format.
    virtual void Write(const short* samples, std::size_t frames) = 0;
    virtual void Write(const float* samples, std::size_t frames) = 0;

    /// Completes the stream. Without it, no file may remain.
    virtual void Commit() = 0;

    /// Remarks on what the stream cannot hold.
    virtual std::vector<std::string> Notes() const { return {}; }
};
