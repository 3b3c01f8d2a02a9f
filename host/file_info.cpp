#include "host/file_info.h"

#include <sndfile.h>

#include <fstream>
#include <utility>
#include <vector>

#include "host/aligned_stream.h"
#include "host/audio_reader.h"
#include "host/container.h"
#include "host/failure.h"
#include "host/file_bytes.h"
#include "host/interrupt.h"
#include "host/media/media_source.h"
#include "host/open_recording.h"
#include "host/timeline.h"

namespace {

/// Samples of the suppressor's rate that the stream processes together.
constexpr int kSuppressorBlock = 320;

/// Empty for containers that only the libraries name.
std::string ContainerName(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::uint64_t start = SizeOfId3Tag(BytesAt(file, 0, kId3HeaderBytes));
    switch (ContainerOf(BytesAt(file, start, kContainerBytes))) {
        case Container::kWav: return "WAV";
        case Container::kFlac: return "FLAC";
        case Container::kOgg: return "Ogg";
        case Container::kOther:
        case Container::kNone: break;
    }
    return "";
}

/// libsndfile's name of a major format or of a codec.
std::string LibraryName(int format) {
    SF_FORMAT_INFO info = {};
    info.format = format;
    const bool known = sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof(info)) == 0;
    return known && info.name != nullptr ? info.name : "unknown";
}

/// @return frames to the end
std::int64_t ReadToEnd(AudioSource& source) {
    constexpr std::size_t kFrames = 1U << 16;
    std::vector<float> samples(kFrames * static_cast<std::size_t>(source.Format().channels));
    std::int64_t frames = 0;
    while (const std::size_t read = source.Read(samples.data(), kFrames)) {
        frames += static_cast<std::int64_t>(read);
        if (Interrupted()) {
            throw Failure("interrupted");
        }
    }
    return frames;
}

void Describe(FileInfo& info, AudioSource& source, bool scans) {
    if (const auto* const reader = dynamic_cast<const AudioReader*>(&source)) {
        info.libraryFormat = LibraryName(reader->LibraryFormat() & SF_FORMAT_TYPEMASK);
        const std::string container = ContainerName(info.path);
        info.container = container.empty() ? info.libraryFormat : container;
        info.libraryCodec = LibraryName(reader->LibraryFormat() & SF_FORMAT_SUBMASK);
    } else {
        MediaInfo media = DescribeMedia(info.path);
        info.container = std::move(media.container);
        info.streams = std::move(media.streams);
    }
    info.format = source.Format();
    info.frames = scans ? ReadToEnd(source) : source.Frames();
}

CleaningInfo Plan(const CleanJob& job, const AudioFormat& format) {
    const Timeline timeline(job, format, {{}});
    AlignedStream<float> stream(format, 1, timeline.ForStream());
    const int blockFrames = stream.Controls().BlockFrames();
    return {.settings = timeline.Applied().front().settings,
            .suppressorRate = format.sampleRate * kSuppressorBlock / blockFrames,
            .blockFrames = blockFrames,
            .latency = stream.Controls().Latency()};
}

}  // namespace

FileInfo Inspect(const std::string& path, const CleanJob& job, bool scans) {
    FileInfo info;
    info.path = path;
    CleanJob own = job;
    own.inputs = {{path, AV_SOURCE_MICROPHONE}};
    own.reading.warn = [&info](const std::string& line) { info.warnings.push_back(line); };
    try {
        Describe(info, *OpenRecording(path, 0, own.reading, path), scans);
        info.cleaning = Plan(own, info.format);
    } catch (const Failure& failure) {
        info.problem = failure.what();
    }
    return info;
}
