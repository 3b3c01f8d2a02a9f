#pragma once

#include <sndfile.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "host/audio_stream.h"
#include "host/output_file.h"

/// Writes a WAV or FLAC file, which appears whole at Commit or not at all: it grows beside its
/// place under another name. Throws Failure when that cannot be.
class AudioWriter : public AudioSink {
public:
    /// @param path ends in .wav or .flac
    /// @param format 16-bit samples are written as such; floats as floats to WAV, as 24 bits to
    ///        FLAC
    /// @param frames that will come, if that is known: a WAV file of more than 4 GB, or maybe more,
    ///        is written as RF64
    AudioWriter(const std::string& path, const AudioFormat& format,
                std::optional<std::int64_t> frames);

    /// Says what stops a file from being written there, before any work is done for it.
    static void CheckPath(const std::string& path);

    void Write(const short* samples, std::size_t frames) override;
    void Write(const float* samples, std::size_t frames) override;

    /// Puts the file in its place, over one that is there and with the permissions of that.
    void Commit() override;

private:
    struct Close {
        void operator()(SNDFILE* file) const;
    };

    /// The file while it grows; goes with the object.
    struct Partial {
        ~Partial();
        std::filesystem::path path;
    };

    [[noreturn]] void Fail() const;

    std::string mPath;
    std::filesystem::path mTarget;  ///< mPath, symbolic links followed
    Partial mPartial;
    OutputFile mOutput;
    std::unique_ptr<SNDFILE, Close> mFile;
};
