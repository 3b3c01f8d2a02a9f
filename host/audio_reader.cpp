#include "host/audio_reader.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <system_error>
#include <utility>
#include <vector>

#include "host/channels.h"
#include "host/container.h"
#include "host/failure.h"
#include "host/file_bytes.h"
#include "host/ogg_pages.h"
#include "host/wav_chunks.h"

namespace {

constexpr sf_count_t kUnknownLength = std::numeric_limits<sf_count_t>::max();

/// Position of the length in the header of a FLAC stream: 36 bits, the first four of which share a
/// byte.
constexpr std::uint64_t kFlacLengthAt = 21;
constexpr std::size_t kFlacLengthBytes = 5;

bool IsFloatSubtype(int subtype) {
    return subtype == SF_FORMAT_PCM_24 || subtype == SF_FORMAT_PCM_32 ||
           subtype == SF_FORMAT_FLOAT || subtype == SF_FORMAT_DOUBLE;
}

/// Refuses what is not a file, before a pipe could block.
const std::string& CheckedPath(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        throw Failure(path, "no such file");
    }
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw Failure(path, "not a regular file");
    }
    return path;
}

}  // namespace

void AudioReader::Close::operator()(SNDFILE* file) const {
    sf_close(file);
}

AudioReader::AudioReader(const std::string& path, ReadOptions options, const std::string& name)
    : mPath(name.empty() ? path : name), mOptions(std::move(options)), mBytes(CheckedPath(path)) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw Failure(path, "cannot be read", errno);
    }
    const std::uint64_t start = SizeOfId3Tag(BytesAt(file, 0, kId3HeaderBytes));
    switch (ContainerOf(BytesAt(file, start, kContainerBytes))) {
        case Container::kFlac: OpenFlac(file, start); break;
        case Container::kOgg: start == 0 ? OpenOgg(file) : Fail(kNoSound); break;
        case Container::kWav: start == 0 ? OpenWav(file) : Fail(kNoSound); break;
        case Container::kOther: OpenOther(file, start); break;
        case Container::kNone: Fail(kNoSound);
    }
    TakeInfo();
}

AudioReader::~AudioReader() = default;

void AudioReader::OpenWav(std::istream& file) {
    const WavChunks chunks = WalkWavChunks(file);
    if (chunks.mpeg) {
        Fail("contains MPEG audio, which is not supported");
    }
    if (chunks.cut && (mOptions.strict || chunks.audioAt == 0)) {
        Fail("is truncated");
    }
    if (chunks.unstated) {
        if (mOptions.strict) {
            Fail("states no length, as crashed recorders leave it");
        }
        Warn("states no length, as crashed recorders leave it; read to its end");
        mBytes.Replace(chunks.audioAt - 4, std::string(4, '\xFF'));
    }
    mFile.reset(mBytes.Open(mInfo));
    if (chunks.cut && mFile && mInfo.frames > 0) {
        const std::uint64_t there = SizeOf(file) - chunks.audioAt;
        mFormat.sampleRate = mInfo.samplerate;
        const double stated = static_cast<double>(mInfo.frames) *
                              static_cast<double>(chunks.statedBytes) / static_cast<double>(there);
        Warn("is cut off after " + Seconds(mInfo.frames) + " of " +
             Seconds(static_cast<std::int64_t>(stated)));
    }
}

/// Hides the stated length from libsndfile, which would otherwise stop there and silently drop any
/// audio beyond it.
void AudioReader::OpenFlac(std::istream& file, std::uint64_t start) {
    mBytes.Select({{start, SizeOf(file) - start}});
    ReadFlacLength();
    mFile.reset(mBytes.Open(mInfo));
}

void AudioReader::OpenOgg(std::istream& file) {
    const OggPages pages = WalkOggPages(file);
    if (pages.chained) {
        Fail("contains several chained streams; only one is supported");
    }
    if (pages.damaged || (!pages.ended && mOptions.strict)) {
        Fail("is truncated or damaged");
    }
    mIsCut = !pages.ended;
    if (!pages.flac.empty()) {
        mBytes.Select(pages.flac);
        ReadFlacLength();
    }
    mFile.reset(mBytes.Open(mInfo));
    mDecodesToFloat = !mIsFlac;
}

void AudioReader::OpenOther(std::istream& file, std::uint64_t start) {
    if (start > 0) {
        Fail(kNoSound);
    }
    const std::string head = BytesAt(file, 0, 8);
    mIsCut = head.compare(0, 4, "FORM") == 0 && BigEndian(head.substr(4)) + 8 > SizeOf(file);
    if (mIsCut && mOptions.strict) {
        Fail("is truncated or damaged");
    }
    mFile.reset(mBytes.Open(mInfo));
}

void AudioReader::ReadFlacLength() {
    mIsFlac = true;
    std::string length = mBytes.BytesAt(kFlacLengthAt, kFlacLengthBytes);
    const auto frames = static_cast<std::int64_t>(BigEndian(length) & 0xF'FFFF'FFFF);
    if (frames > 0 && length.size() == kFlacLengthBytes) {
        mFrames = frames;
        length[0] = static_cast<char>(length[0] & 0xF0);
        mBytes.Replace(kFlacLengthAt, length[0] + std::string(kFlacLengthBytes - 1, '\0'));
    }
}

void AudioReader::TakeInfo() {
    if (!mFile) {
        Fail(kNoSound);
    }
    if (mInfo.channels > kMostChannels) {
        Fail(TooManyChannels(mInfo.channels));
    }
    if (mInfo.frames == 0) {
        Fail("contains no audio");
    }
    mFormat = {mInfo.samplerate, mInfo.channels,
               IsFloatSubtype(mInfo.format & SF_FORMAT_SUBMASK) ? SampleFormat::kFloat
                                                                : SampleFormat::kS16,
               (mInfo.format & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_24};
    if (!mIsFlac && mInfo.frames != kUnknownLength) {
        mFrames = mInfo.frames;
    }
}

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

/// Refuses a stream that exceeds its stated length: there is no telling which of the two is right.
std::size_t AudioReader::Checked(std::int64_t frames) {
    mRead += frames;
    const bool lost = sf_error(mFile.get()) != SF_ERR_NO_ERROR;
    if (lost && !mBytes.AtEnd()) {
        Fail("is truncated or damaged");
    }
    if (mFrames && mRead > *mFrames) {
        Fail("is damaged: it continues beyond its stated length");
    }
    if (frames == 0 && mRead == 0) {
        Fail("contains no audio");
    }
    mIsCut = mIsCut || (lost && mRead != mFrames);  // a tag may follow the audio
    if (frames == 0 && (mIsCut || mRead < mFrames.value_or(0))) {
        EndEarly();
    }
    return static_cast<std::size_t>(frames);
}

void AudioReader::EndEarly() {
    if (mOptions.strict) {
        Fail("is truncated or damaged");
    }
    const bool longer = mFrames && *mFrames > mRead;
    Warn("is cut off after " + Seconds(mRead) + (longer ? " of " + Seconds(*mFrames) : ""));
    mIsCut = false;  // one warning
    mFrames = mRead;
}

std::string AudioReader::Seconds(std::int64_t frames) const {
    return SecondsText(frames, mFormat.sampleRate);
}

void AudioReader::Warn(const std::string& remark) const {
    mOptions.warn(Failure(mPath, remark).what());
}

void AudioReader::Fail(const std::string& reason) const {
    throw Failure(mPath, reason);
}
