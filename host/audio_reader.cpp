#include "host/audio_reader.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <system_error>
#include <vector>

#include "host/failure.h"

namespace {

constexpr sf_count_t kUnknownLength = std::numeric_limits<sf_count_t>::max();

/// Lengths that writers put into a WAV header when they cannot go back to it, such as into a pipe.
constexpr long long kStreamedWavBytes = 0x7FFFF000;

/// libsndfile takes a WAV or RF64 file that ends early as shorter than its header says, and tells
/// only its log: "data : 142084 (should be 49956)", "*** Calculated frame count 49948 does not
/// match ...".
bool IsCutWav(SNDFILE* file) {
    std::array<char, 32768> log = {};
    sf_command(file, SFC_GET_LOG_INFO, log.data(), static_cast<int>(log.size()));
    const std::string text = log.data();
    if (text.find("\n*** Calculated frame count") != std::string::npos) {
        return true;
    }
    const std::string label = "\ndata : ";
    const std::size_t at = text.find(label);
    if (at == std::string::npos) {
        return false;
    }
    const std::size_t start = at + label.size();
    const std::string line = text.substr(start, text.find('\n', start) - start);
    return line.find("(should be") != std::string::npos &&
           std::strtoll(line.c_str(), nullptr, 10) < kStreamedWavBytes;
}

bool IsFloatKind(int subtype) {
    return subtype == SF_FORMAT_PCM_24 || subtype == SF_FORMAT_PCM_32 ||
           subtype == SF_FORMAT_FLOAT || subtype == SF_FORMAT_DOUBLE;
}

}  // namespace

void AudioReader::Close::operator()(SNDFILE* file) const {
    sf_close(file);
}

AudioReader::AudioReader(const std::string& path) : mPath(path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) {
        Fail("no such file");
    }
    if (!std::filesystem::is_regular_file(status)) {
        Fail("not a regular file");
    }
    SF_INFO info = {};
    mFile.reset(sf_open(path.c_str(), SFM_READ, &info));
    if (!mFile) {
        Fail(sf_error(nullptr) == SF_ERR_SYSTEM ? "cannot be read" : "not a WAV, FLAC or Ogg file");
    }
    const int container = info.format & SF_FORMAT_TYPEMASK;
    const int subtype = info.format & SF_FORMAT_SUBMASK;
    const bool wav =
        container == SF_FORMAT_WAV || container == SF_FORMAT_WAVEX || container == SF_FORMAT_RF64;
    const bool ogg = container == SF_FORMAT_OGG;
    if (!wav && !ogg && container != SF_FORMAT_FLAC) {
        Fail("not a WAV, FLAC or Ogg file");
    }
    if (info.channels > 2) {
        Fail("has " + std::to_string(info.channels) + " channels; one or two are taken");
    }
    if ((wav && IsCutWav(mFile.get())) || (ogg && info.frames == kUnknownLength)) {
        Fail("is truncated");
    }
    if (info.frames == 0) {
        Fail("holds no audio");
    }
    mFormat = {info.samplerate, info.channels,
               IsFloatKind(subtype) ? SampleKind::kFloat : SampleKind::kS16};
    mDecodesToFloat = ogg;
    if (info.frames != kUnknownLength) {
        mFrames = info.frames;
    }
}

AudioReader::~AudioReader() = default;

std::size_t AudioReader::Read(float* samples, std::size_t frames) {
    return Checked(sf_readf_float(mFile.get(), samples, static_cast<sf_count_t>(frames)));
}

std::size_t AudioReader::Read(short* samples, std::size_t frames) {
    if (!mDecodesToFloat) {
        return Checked(sf_readf_short(mFile.get(), samples, static_cast<sf_count_t>(frames)));
    }
    const auto channels = static_cast<std::size_t>(mFormat.channels);
    std::vector<float> decoded(frames * channels);
    const std::size_t read = Read(decoded.data(), frames);
    std::transform(decoded.begin(), decoded.begin() + static_cast<std::ptrdiff_t>(read * channels),
                   samples, FromFloat<short>);
    return read;
}

/// Refuses a stream that breaks off: by an error of the decoder, or short of its stated length.
std::size_t AudioReader::Checked(std::int64_t frames) {
    mRead += frames;
    if (sf_error(mFile.get()) != SF_ERR_NO_ERROR || (frames == 0 && mRead < mFrames.value_or(0))) {
        Fail("is truncated or damaged");
    }
    if (frames == 0 && mRead == 0) {
        Fail("holds no audio");
    }
    return static_cast<std::size_t>(frames);
}

void AudioReader::Fail(const std::string& reason) const {
    throw Failure(mPath + ": " + reason);
}
