#include "host/audio_writer.h"

#include <algorithm>
#include <random>
#include <system_error>

#include "host/failure.h"

namespace fs = std::filesystem;

namespace {

std::string LowerExtension(const fs::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

/// What a WAV file can say of its length, less its headers.
constexpr std::int64_t kLargestWavBytes = 0xFFFF0000;

bool FitsWav(const AudioFormat& format, std::optional<std::int64_t> frames) {
    const std::int64_t frameBytes =
        std::int64_t{format.channels} * (format.kind == SampleKind::kS16 ? 2 : 4);
    return frames && *frames <= kLargestWavBytes / frameBytes;
}

int FileFormat(const fs::path& path, const AudioFormat& format,
               std::optional<std::int64_t> frames) {
    const bool s16 = format.kind == SampleKind::kS16;
    if (LowerExtension(path) == ".flac") {
        return SF_FORMAT_FLAC | (s16 ? SF_FORMAT_PCM_16 : SF_FORMAT_PCM_24);
    }
    return (FitsWav(format, frames) ? SF_FORMAT_WAV : SF_FORMAT_RF64) |
           (s16 ? SF_FORMAT_PCM_16 : SF_FORMAT_FLOAT);
}

/// A hidden name in the same folder, so that the file can be moved to its place at one stroke.
fs::path PartialPath(const fs::path& target) {
    std::string name = ".";
    name += target.filename().string();
    name += '.';
    name += std::to_string(std::random_device()());
    name += ".partial";
    return target.parent_path() / name;
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
        throw Failure(path + ": the output is a .wav or .flac file");
    }
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw Failure(path + ": not a regular file");
    }
}

AudioWriter::AudioWriter(const std::string& path, const AudioFormat& format,
                         std::optional<std::int64_t> frames)
    : mPath(path) {
    CheckPath(path);
    std::error_code error;
    mTarget = fs::weakly_canonical(path, error);
    if (error) {
        Fail();
    }
    mPartial.path = PartialPath(mTarget);
    SF_INFO info = {};
    info.samplerate = format.sampleRate;
    info.channels = format.channels;
    info.format = FileFormat(mTarget, format, frames);
    mFile.reset(sf_open(mPartial.path.c_str(), SFM_WRITE, &info));
    if (!mFile) {
        Fail();
    }
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
    if (sf_close(mFile.release()) != 0 || !sound) {
        Fail();
    }
    std::error_code error;
    fs::rename(mPartial.path, mTarget, error);
    if (error) {
        Fail();
    }
}

void AudioWriter::Fail() const {
    throw Failure(mPath + ": cannot be written");
}
