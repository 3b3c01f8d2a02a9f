#pragma once

#include <sndfile.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

#include "host/audio_stream.h"
#include "host/flac_input.h"

/// Reads a WAV, FLAC or Ogg file. Throws Failure for anything but a complete file of one or two
/// channels with at least one frame.
class AudioReader : public AudioSource {
public:
    explicit AudioReader(const std::string& path);
    ~AudioReader() override;

    /// 16-bit for integers of up to 16 bits and for lossy codecs, else float.
    const AudioFormat& Format() const override { return mFormat; }

    /// Length, if the file states it.
    std::optional<std::int64_t> Frames() const override { return mFrames; }

    /// Reads up to `frames` frames. @return frames read; 0 at the end
    std::size_t Read(short* samples, std::size_t frames) override;
    std::size_t Read(float* samples, std::size_t frames) override;

private:
    struct Close {
        void operator()(SNDFILE* file) const;
    };

    [[noreturn]] void Fail(const std::string& reason) const;
    void CheckContainer(int container, std::istream& file) const;
    std::size_t Checked(std::int64_t frames);

    std::string mPath;
    std::unique_ptr<FlacInput> mFlac;  ///< what mFile reads from, for a FLAC file
    std::unique_ptr<SNDFILE, Close> mFile;
    AudioFormat mFormat = {};
    std::optional<std::int64_t> mFrames;
    std::int64_t mRead = 0;
    bool mDecodesToFloat = false;
};
