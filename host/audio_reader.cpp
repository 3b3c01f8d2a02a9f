#include "host/audio_reader.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>
#include <system_error>
#include <vector>

#include "host/failure.h"
#include "host/file_bytes.h"
#include "host/ogg_pages.h"
#include "host/wav_chunks.h"

namespace {

constexpr sf_count_t kUnknownLength = std::numeric_limits<sf_count_t>::max();

/// The container by its first bytes; 0 for an unsupported one. libsndfile's own detection is not
/// used: its MPEG decoder writes to standard error.
int ContainerOf(std::istream& file) {
    const std::string start = BytesAt(file, 0, 12);
    const std::string magic = start.substr(0, 4);
    const std::string form = start.size() == 12 ? start.substr(8) : "";
    if (magic == "fLaC") {
        return SF_FORMAT_FLAC;
    }
    if (magic == "OggS") {
        return SF_FORMAT_OGG;
    }
    const bool riff = magic == "RIFF" || magic == "RIFX" || magic == "RF64";
    return riff && form == "WAVE" ? SF_FORMAT_WAV : 0;
}

bool IsFloatSubtype(int subtype) {
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
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        Fail("cannot be read");
    }
    const int container = ContainerOf(file);
    CheckContainer(container, file);
    SF_INFO info = {};
    if (container == SF_FORMAT_FLAC) {
        mFlac = std::make_unique<FlacInput>(path);
        mFile.reset(mFlac->Open(info));
    } else {
        mFile.reset(sf_open(path.c_str(), SFM_READ, &info));
    }
    if (!mFile) {
        Fail("not a WAV, FLAC or Ogg file");
    }
    if (info.channels > 2) {
        Fail("has " + std::to_string(info.channels) + " channels; only one or two are supported");
    }
    if (container == SF_FORMAT_OGG && info.frames == kUnknownLength) {
        Fail("is truncated");
    }
    if (info.frames == 0) {
        Fail("contains no audio");
    }
    mFormat = {info.samplerate, info.channels,
               IsFloatSubtype(info.format & SF_FORMAT_SUBMASK) ? SampleFormat::kFloat
                                                               : SampleFormat::kS16};
    mDecodesToFloat = container == SF_FORMAT_OGG;
    if (mFlac) {
        mFrames = mFlac->StatedFrames();
    } else if (info.frames != kUnknownLength) {
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

/// Refuses damage that the decoder does not report.
void AudioReader::CheckContainer(int container, std::istream& file) const {
    if (container == SF_FORMAT_WAV) {
        const WavChunks chunks = WalkWavChunks(file);
        if (chunks.mpeg) {
            Fail("contains MPEG audio, which is not supported");
        }
        if (chunks.cut) {
            Fail("is truncated");
        }
    } else if (container == SF_FORMAT_OGG) {
        const OggPages pages = WalkOggPages(file);
        if (pages.chained) {
            Fail("contains several chained streams; only one is supported");
        }
        if (!pages.ended) {
            Fail("is truncated or damaged");
        }
    } else if (container != SF_FORMAT_FLAC) {
        Fail("not a WAV, FLAC or Ogg file");
    }
}

/// Refuses a stream that ends early (a decoder error, or less than its stated length) and one that
/// exceeds that length: there is no telling which of the two is right.
std::size_t AudioReader::Checked(std::int64_t frames) {
    mRead += frames;
    if (sf_error(mFile.get()) != SF_ERR_NO_ERROR || (frames == 0 && mRead < mFrames.value_or(0))) {
        Fail("is truncated or damaged");
    }
    if (mFrames && mRead > *mFrames) {
        Fail("is damaged: it continues beyond its stated length");
    }
    if (frames == 0 && mRead == 0) {
        Fail("contains no audio");
    }
    return static_cast<std::size_t>(frames);
}

void AudioReader::Fail(const std::string& reason) const {
    throw Failure(mPath, reason);
}
