#include "host/audio_writer.h"

#include <cerrno>
#include <random>
#include <system_error>

#include "host/failure.h"
#include "host/follow_links.h"
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

/// A hidden name in the same folder, so that the final rename is atomic. Its length does not depend
/// on the target's, which may already be the longest possible.
fs::path PartialPath(const fs::path& target) {
    return target.parent_path() /
           (".audio-filter-" + std::to_string(std::random_device()()) + ".partial");
}

}  // namespace

void AudioWriter::Close::operator()(SNDFILE* file) const {
    sf_close(file);
}

AudioWriter::Partial::~Partial() {
    std::error_code ignored;
    fs::remove(path, ignored);
}

void AudioWriter::CheckPath(const std::string& path) {
    const std::string extension = LowerExtension(path);
    if (extension != ".wav" && extension != ".flac") {
        throw Failure(path, "the output must be a .wav or .flac file");
    }
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw Failure(path, "not a regular file");
    }
    // The rename at the end would replace a read-only file as well.
    const int refused = fs::is_regular_file(status) ? OutputFile::MayBeReplaced(path) : 0;
    if (status.type() == fs::file_type::none || refused != 0) {
        throw Failure(path, "cannot be written", refused == 0 ? error.value() : refused);
    }
}

AudioWriter::AudioWriter(const std::string& path, const AudioFormat& format,
                         std::optional<std::int64_t> frames)
    : mPath(path) {
    CheckPath(path);
    if (LowerExtension(path) == ".flac" && !FitsFlac(format.sampleRate)) {
        throw Failure(path, "FLAC cannot store " + std::to_string(format.sampleRate) +
                                " Hz; use a .wav file");
    }
    const std::optional<fs::path> target = FollowLinks(path);
    if (!target) {
        Fail(ELOOP);
    }
    mTarget = *target;
    std::error_code error;
    const fs::file_status replaced = fs::status(mTarget, error);
    const fs::path partial = PartialPath(mTarget);
    if (!mOutput.Create(
            partial, fs::exists(replaced) ? std::optional(replaced.permissions()) : std::nullopt)) {
        Fail();
    }
    mPartial.path = partial;
    SF_INFO info = {};
    info.samplerate = format.sampleRate;
    info.channels = format.channels;
    info.format = FileFormat(path, format, frames);
    mFile.reset(mOutput.Open(info));
    if (!mFile) {
        Fail();
    }
    // The PEAK chunk contains a time stamp: equal audio would not give equal bytes.
    sf_command(mFile.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    sf_command(mFile.get(), SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
    sf_command(mFile.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
}

void AudioWriter::Write(const short* samples, std::size_t frames) {
    const auto count = static_cast<sf_count_t>(frames);
    if (sf_writef_short(mFile.get(), samples, count) != count) {
        Fail();
    }
}

void AudioWriter::Write(const float* samples, std::size_t frames) {
    const auto count = static_cast<sf_count_t>(frames);
    if (sf_writef_float(mFile.get(), samples, count) != count) {
        Fail();
    }
}

void AudioWriter::Commit() {
    const bool sound = sf_error(mFile.get()) == SF_ERR_NO_ERROR;
    const bool closed = sf_close(mFile.release()) == 0;
    if (!mOutput.Close() || !closed || !sound) {
        Fail();
    }
    std::error_code error;
    fs::rename(mPartial.path, mTarget, error);
    if (error) {
        Fail(error.value());
    }
}

void AudioWriter::Fail(int error) const {
    throw Failure(mPath, "cannot be written", error == 0 ? mOutput.Error() : error);
}
