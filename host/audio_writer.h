#pragma once

#include <sndfile.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/audio_stream.h"
#include "host/file_tags.h"
#include "host/output_options.h"
#include "host/partial_file.h"

/// Writes a WAV, FLAC, AIFF or CAF file through libsndfile, which appears whole at Commit or not at all: until then it has a
/// temporary name in the same folder. Throws Failure when it cannot be written.
class AudioWriter : public AudioSink {
public:
    /// @param path ends in .wav, .flac, .aiff, .aif or .caf
    /// @param format 16-bit samples are written as such, floats as float to WAV and CAF and as 24 bits to
    ///        FLAC and AIFF, unless the options state it
    /// @param frames expected length, if known: a WAV file that may exceed 4 GB is written as RF64
    /// @param replace see PartialFile
    AudioWriter(const std::string& path, const AudioFormat& format,
                std::optional<std::int64_t> frames, const OutputOptions& options = {},
                FileTags tags = {}, bool replace = true);

    /// Throws Failure if the path is unsuitable, before any work is done.
    static void CheckPath(const std::string& path);

    void Write(const short* samples, std::size_t frames) override;
    void Write(const float* samples, std::size_t frames) override;

    /// Renames the file to its path.
    void Commit() override;

private:
    struct Close {
        void operator()(SNDFILE* file) const;
    };

    static const std::string& Suited(const std::string& path, const AudioFormat& format,
                                     const OutputOptions& options);

    bool PutTags();

    FileTags mTags;
    PartialFile mPartial;
    std::size_t mChannels;
    bool mWritesFloat = false;
    std::unique_ptr<SNDFILE, Close> mFile;
};

/// Whether the extension is one that AudioWriter writes.
bool IsSoundOutput(const std::string& path);
