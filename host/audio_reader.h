#pragma once

#include <sndfile.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

#include "host/audio_stream.h"
#include "host/read_options.h"
#include "host/sound_bytes.h"

/// Reads a WAV, FLAC, Ogg, AIFF, CAF, AU or Wave64 file through libsndfile. Throws Failure for anything but a file of 1..8 channels with at least
/// one frame. A file that ends early is read up to there, with a warning.
class AudioReader : public AudioSource {
public:
    /// @param name in messages; empty for the path
    explicit AudioReader(const std::string& path, ReadOptions options = {},
                         const std::string& name = {});
    ~AudioReader() override;

    /// 16-bit for integers of up to 16 bits and for lossy codecs, else float.
    const AudioFormat& Format() const override { return mFormat; }

    /// Length, if the file states it; corrected once its end is reached.
    std::optional<std::int64_t> Frames() const override { return mFrames; }

    /// Frames that Read has returned so far.
    std::int64_t FramesRead() const { return mRead; }

    /// libsndfile's constants of the container and the codec, SF_FORMAT_...
    int LibraryFormat() const { return mInfo.format; }

    /// Reads up to `frames` frames. @return frames read; 0 at the end
    std::size_t Read(short* samples, std::size_t frames) override;
    std::size_t Read(float* samples, std::size_t frames) override;

private:
    struct Close {
        void operator()(SNDFILE* file) const;
    };

    void Warn(const std::string& remark) const;
    [[noreturn]] void Fail(const std::string& reason) const;
    void OpenWav(std::istream& file);
    void OpenFlac(std::istream& file, std::uint64_t start);
    void OpenOgg(std::istream& file);
    void OpenOther(std::istream& file, std::uint64_t start);
    void ReadFlacLength();
    void TakeInfo();
    std::size_t Checked(std::int64_t frames);
    void EndEarly();
    std::string Seconds(std::int64_t frames) const;

    std::string mPath;
    ReadOptions mOptions;
    SoundBytes mBytes;
    SF_INFO mInfo = {};
    std::unique_ptr<SNDFILE, Close> mFile;
    AudioFormat mFormat = {};
    std::optional<std::int64_t> mFrames;
    std::int64_t mRead = 0;
    bool mDecodesToFloat = false;
    bool mIsFlac = false;
    bool mIsCut = false;  ///< known before its end is reached
};
