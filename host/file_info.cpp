#include "host/file_info.h"

#include <sndfile.h>

#include <fstream>
#include <vector>

#include "host/aligned_stream.h"
#include "host/audio_reader.h"
#include "host/container.h"
#include "host/failure.h"
#include "host/file_bytes.h"
#include "host/interrupt.h"
#include "host/timeline.h"

namespace {

/// Samples of the suppressor's rate that the stream processes together.
constexpr int kSuppressorBlock = 320;

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
    return "other";
}

/// libsndfile's name of a major format or of a codec.
std::string LibraryName(int format) {
    SF_FORMAT_INFO info = {};
    info.format = format;
    const bool known = sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof(info)) == 0;
    return known && info.name != nullptr ? info.name : "unknown";
}

void ReadToEnd(AudioReader& reader) {
    std::vector<float> samples((1U << 16) * static_cast<std::size_t>(reader.Format().channels));
    while (reader.Read(samples.data(), 1U << 16) > 0) {
        if (Interrupted()) {
            throw Failure("interrupted");
        }
    }
}

void Describe(FileInfo& info, AudioReader& reader, bool scans) {
    info.container = ContainerName(info.path);
    info.libraryFormat = LibraryName(reader.LibraryFormat() & SF_FORMAT_TYPEMASK);
    info.libraryCodec = LibraryName(reader.LibraryFormat() & SF_FORMAT_SUBMASK);
    info.format = reader.Format();
    if (scans) {
        ReadToEnd(reader);
    }
    info.frames = scans ? reader.FramesRead() : reader.Frames();
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
        AudioReader reader(path, own.reading);
        Describe(info, reader, scans);
        info.cleaning = Plan(own, info.format);
    } catch (const Failure& failure) {
        info.problem = failure.what();
    }
    return info;
}
