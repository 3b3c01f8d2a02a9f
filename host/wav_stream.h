#pragma once

#include <memory>
#include <string>

#include "host/audio_stream.h"
#include "host/byte_stream.h"
#include "host/read_options.h"

/// Reads WAV from a pipe as it arrives: integers of 8, 16, 24 and 32 bits and floats. Throws Failure
/// for anything else. A stream that ends early is read up to there, with a warning.
class WavStreamReader : public AudioSource {
public:
    WavStreamReader(std::unique_ptr<ByteInput> input, ReadOptions options);

    const AudioFormat& Format() const override { return mFormat; }
    std::optional<std::int64_t> Frames() const override { return mFrames; }
    std::size_t Read(short* samples, std::size_t frames) override;
    std::size_t Read(float* samples, std::size_t frames) override;

private:
    void ReadHeader();
    void TakeFormat(const std::string& chunk);
    std::string Bytes(std::size_t count);
    void Skip(std::uint64_t count);
    template <typename Sample>
    std::size_t Decode(Sample* samples, std::size_t frames);
    [[noreturn]] void Fail(const std::string& reason) const;

    std::unique_ptr<ByteInput> mInput;
    ReadOptions mOptions;
    AudioFormat mFormat = {};
    bool mIsFloat = false;         ///< in the stream
    std::size_t mSampleBytes = 0;  ///< in the stream
    std::optional<std::int64_t> mFrames;
    std::int64_t mRead = 0;
};

/// The header of a WAV stream of unknown length.
std::string WavStreamHeader(const AudioFormat& format);
