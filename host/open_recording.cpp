#include "host/open_recording.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "host/audio_reader.h"
#include "host/container.h"
#include "host/failure.h"
#include "host/file_bytes.h"
#include "host/media/media_source.h"
#include "host/sound_bytes.h"
#include "host/wav_chunks.h"

namespace {

unsigned UnsignedAt(const std::string& bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

/// Whether an Ogg file holds nothing but what libsndfile decodes: one track of a codec that it supports, with its channels
/// in the order of WAV files.
bool HoldsOneOggTrack(std::istream& file) {
    constexpr std::size_t kOggHeaderBytes = 27;
    const std::string header = BytesAt(file, 0, kOggHeaderBytes + 1);
    const std::size_t body = kOggHeaderBytes + (header.size() > 26 ? UnsignedAt(header, 26) : 0);
    const std::string codec = BytesAt(file, body, 12);
    const std::size_t packet =
        header.size() > kOggHeaderBytes ? UnsignedAt(header, kOggHeaderBytes) : 0;
    const std::string second = BytesAt(file, body + packet, 6);
    const bool isMultiplexed =
        second.starts_with("OggS") && second.size() == 6 && UnsignedAt(second, 5) == 2;
    if (isMultiplexed || codec.size() < 12) {
        return !isMultiplexed;  // AudioReader reports that it is cut off
    }
    const bool vorbis = codec.starts_with("\x01vorbis") && UnsignedAt(codec, 11) <= 2;
    const bool opus = codec.starts_with("OpusHead") && UnsignedAt(codec, 9) <= 2;
    return vorbis || opus ||
           codec.starts_with(
               "\x7F"
               "FLAC");
}

/// Whether libsndfile supports the codec.
bool IsReadable(const std::string& path) {
    SoundBytes bytes(path);
    SF_INFO info = {};
    SNDFILE* file = bytes.Open(info);
    sf_close(file);
    return file != nullptr;
}

/// Whether AudioReader is to read a file, or report what is wrong with it.
bool IsForAudioReader(const std::string& path, int track) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return true;
    }
    std::ifstream file(path, std::ios::binary);
    const std::uint64_t start = SizeOfId3Tag(BytesAt(file, 0, kId3HeaderBytes));
    switch (ContainerOf(BytesAt(file, start, kContainerBytes))) {
        case Container::kFlac: return track <= 1;
        case Container::kOgg: return track <= 1 && start == 0 && HoldsOneOggTrack(file);
        case Container::kWav: return track <= 1 && start == 0 && !WalkWavChunks(file).mpeg;
        case Container::kOther: return track <= 1 && start == 0 && IsReadable(path);
        case Container::kNone: return !file;
    }
    return true;
}

}  // namespace

std::unique_ptr<AudioSource> OpenRecording(const std::string& path, int track,
                                           const ReadOptions& options, const std::string& name) {
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error) &&
        std::filesystem::file_size(path, error) == 0) {
        throw Failure(name.empty() ? path : name, "is empty");
    }
    if (IsForAudioReader(path, track)) {
        return std::make_unique<AudioReader>(path, options, name);
    }
    return OpenMediaSource(path, track, options, name);
}
