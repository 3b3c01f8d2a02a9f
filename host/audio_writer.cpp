#include "host/audio_writer.h"

#include "host/failure.h"
#include "host/media_extensions.h"

namespace fs = std::filesystem;

namespace {

/// The longest audio that a plain WAV header can state, with room for the headers.
constexpr std::int64_t kLargestWavBytes = 0xFFFF0000;

bool FitsWav(const AudioFormat& format, std::optional<std::int64_t> frames) {
    const std::int64_t frameBytes =
        std::int64_t{format.channels} * (format.samples == SampleFormat::kS16 ? 2 : 4);
    return frames && *frames <= kLargestWavBytes / frameBytes;
}

int FileFormat(const fs::path& path, const AudioFormat& format,
               std::optional<std::int64_t> frames) {
    const bool s16 = format.samples == SampleFormat::kS16;
    if (LowerExtension(path) == ".flac") {
        return SF_FORMAT_FLAC | (s16 ? SF_FORMAT_PCM_16 : SF_FORMAT_PCM_24);
    }
    return (FitsWav(format, frames) ? SF_FORMAT_WAV : SF_FORMAT_RF64) |
           (s16 ? SF_FORMAT_PCM_16 : SF_FORMAT_FLOAT);
}

/// FLAC stores rates up to 65535 Hz in Hz, and higher ones in units of 10 Hz.
bool FitsFlac(int sampleRate) {
    return sampleRate <= 0xFFFF || (sampleRate <= 655350 && sampleRate % 10 == 0);
}

}  // namespace

void AudioWriter::Close::operator()(SNDFILE* file) const {
    sf_close(file);
}

void AudioWriter::CheckPath(const std::string& path) {
    const std::string extension = LowerExtension(path);
    if (extension != ".wav" && extension != ".flac") {
        throw Failure(path, "the output must be a .wav or .flac file");
    }
    PartialFile::CheckPath(path);
}

/// Refuses what the file cannot hold, before it is created.
const std::string& AudioWriter::Suited(const std::string& path, const AudioFormat& format) {
    CheckPath(path);
    if (LowerExtension(path) == ".flac" && !FitsFlac(format.sampleRate)) {
        throw Failure(path, "FLAC cannot store " + std::to_string(format.sampleRate) +
                                " Hz; use a .wav file");
    }
    return path;
}

AudioWriter::AudioWriter(const std::string& path, const AudioFormat& format,
                         std::optional<std::int64_t> frames)
    : mPartial(Suited(path, format)) {
    SF_INFO info = {};
    info.samplerate = format.sampleRate;
    info.channels = format.channels;
    info.format = FileFormat(path, format, frames);
    mFile.reset(mPartial.File().Open(info));
    if (!mFile) {
        mPartial.Fail();
    }
    // The PEAK chunk contains a time stamp: equal audio would not give equal bytes.
    sf_command(mFile.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    sf_command(mFile.get(), SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
    sf_command(mFile.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
}

void AudioWriter::Write(const short* samples, std::size_t frames) {
    const auto count = static_cast<sf_count_t>(frames);
    if (sf_writef_short(mFile.get(), samples, count) != count) {
        mPartial.Fail();
    }
}

void AudioWriter::Write(const float* samples, std::size_t frames) {
    const auto count = static_cast<sf_count_t>(frames);
    if (sf_writef_float(mFile.get(), samples, count) != count) {
        mPartial.Fail();
    }
}

void AudioWriter::Commit() {
    const bool sound = sf_error(mFile.get()) == SF_ERR_NO_ERROR;
    const bool closed = sf_close(mFile.release()) == 0;
    if (!closed || !sound) {
        mPartial.Fail();
    }
    mPartial.Commit();
}
