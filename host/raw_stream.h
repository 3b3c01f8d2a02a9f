#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/audio_stream.h"
#include "host/byte_stream.h"

/// Raw samples in native byte order, as passed through pipes.

/// Reads "s16:48000:2" or "f32:44100:1". @return none for anything else
std::optional<AudioFormat> ParseRawFormat(const std::string& text);

/// Formats what ParseRawFormat reads.
std::string RawFormatName(const AudioFormat& format);

/// Throws Failure if the stream cannot be read or ends inside a frame. Where a signal ends it, the
/// incomplete frame is dropped.
class RawReader : public AudioSource {
public:
    RawReader(std::unique_ptr<ByteInput> input, const AudioFormat& format);

    const AudioFormat& Format() const override { return mFormat; }
    std::optional<std::int64_t> Frames() const override { return std::nullopt; }
    std::size_t Read(short* samples, std::size_t frames) override;
    std::size_t Read(float* samples, std::size_t frames) override;

private:
    std::size_t ReadBytes(char* bytes, std::size_t frames, std::size_t frameBytes);

    std::unique_ptr<ByteInput> mInput;
    AudioFormat mFormat;
};

/// Throws Failure if the stream cannot be written.
class RawWriter : public AudioSink {
public:
    RawWriter(std::unique_ptr<ByteOutput> output, const AudioFormat& format);

    void Write(const short* samples, std::size_t frames) override;
    void Write(const float* samples, std::size_t frames) override;
    void Commit() override;

private:
    void WriteBytes(const void* bytes, std::size_t frames, std::size_t sampleBytes);

    std::unique_ptr<ByteOutput> mOutput;
    AudioFormat mFormat;
};
