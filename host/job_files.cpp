#include "host/job_files.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "host/audio_writer.h"
#include "host/failure.h"
#include "host/file_tags.h"
#include "host/follow_links.h"
#include "host/interrupt.h"
#include "host/media_extensions.h"
#include "host/open_recording.h"
#include "host/pipe_stream.h"
#include "host/piped_file.h"
#include "host/raw_stream.h"
#include "host/wav_stream.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kPipe = "-";
constexpr const char* kStandardInput = "/dev/stdin";

/// A file that ends where a signal ends a live recording beside it.
class EndsWithRecording : public AudioSource {
public:
    explicit EndsWithRecording(std::unique_ptr<AudioSource> source) : mSource(std::move(source)) {}

    const AudioFormat& Format() const override { return mSource->Format(); }
    std::optional<std::int64_t> Frames() const override { return mSource->Frames(); }
    std::size_t Read(short* samples, std::size_t frames) override {
        return HasEnded() ? 0 : mSource->Read(samples, frames);
    }
    std::size_t Read(float* samples, std::size_t frames) override {
        return HasEnded() ? 0 : mSource->Read(samples, frames);
    }

private:
    /// Not where the job is given up: its output must not look complete.
    static bool HasEnded() { return SignalArrived() && !Interrupted(); }

    std::unique_ptr<AudioSource> mSource;
};

/// The sink of a file with one cleaned track.
class OnlyTrack : public AudioSink {
public:
    OnlyTrack(std::shared_ptr<MediaOutput> output, std::unique_ptr<AudioSink> sink)
        : mOutput(std::move(output)), mSink(std::move(sink)) {}

    void Write(const short* samples, std::size_t frames) override { mSink->Write(samples, frames); }
    void Write(const float* samples, std::size_t frames) override { mSink->Write(samples, frames); }
    void Commit() override { mSink->Commit(); }
    std::vector<std::string> Notes() const override { return mOutput->Notes(); }

private:
    std::shared_ptr<MediaOutput> mOutput;
    std::unique_ptr<AudioSink> mSink;
};

std::unique_ptr<AudioSource> OpenInput(const std::string& path, int track, const CleanJob& job) {
    std::error_code error;
    const bool isPipe = path == kPipe;
    if (isPipe && job.raw) {
        auto input = std::make_unique<PipeInput>();
        CheckIsRaw(*input);
        return std::make_unique<RawReader>(std::move(input), *job.raw);
    }
    if (isPipe && !fs::is_regular_file(kStandardInput, error)) {
        return OpenPiped(std::make_unique<PipeInput>(), job.reading);
    }
    if (fs::is_fifo(path, error)) {
        return OpenPiped(std::make_unique<PipeInput>(path), job.reading);
    }
    return std::make_unique<EndsWithRecording>(OpenRecording(
        isPipe ? kStandardInput : path, track, job.reading, isPipe ? "standard input" : path));
}

}  // namespace

MediaOutputJob MediaJobOf(const CleanJob& job) {
    std::error_code error;
    const std::string& first = job.inputs.front().path;
    const bool isFile = first != kPipe && fs::is_regular_file(first, error);
    return {job.output, isFile ? first : "", job.track, job.encoding, job.replace};
}

bool AreFiles(const CleanJob& job) {
    return std::all_of(job.inputs.begin(), job.inputs.end(), [](const InputFile& input) {
        std::error_code error;
        return input.path != kPipe && fs::is_regular_file(input.path, error);
    });
}

Sources OpenInputs(const CleanJob& job) {
    Sources sources;
    for (const InputFile& input : job.inputs) {
        sources.push_back(OpenInput(input.path, sources.empty() ? job.track : 0, job));
        std::error_code error;
        if (input.path != kPipe && fs::equivalent(input.path, job.output, error)) {
            throw Failure(job.output, "is also an input");
        }
    }
    return sources;
}

std::unique_ptr<AudioSink> OpenOutput(const CleanJob& job, const AudioFormat& format,
                                      std::optional<std::int64_t> frames) {
    if (job.tracks != nullptr) {
        return job.tracks->AddTrack(job.track, format);
    }
    if (IsMediaOutput(job.output)) {
        const std::shared_ptr<MediaOutput> output = OpenMediaOutput(MediaJobOf(job));
        return std::make_unique<OnlyTrack>(output, output->AddTrack(job.track, format));
    }
    if (job.output != kPipe) {
        const std::string input = MediaJobOf(job).input;
        return std::make_unique<AudioWriter>(
            job.output, format, frames, job.encoding,
            input.empty() ? FileTags() : TagsFor(input, LowerExtension(job.output)), job.replace);
    }
    if (!job.encoding.codec.empty() || job.encoding.bitRate || job.encoding.bits) {
        throw Failure("standard output: --codec, --bitrate and --bits are for files");
    }
    auto output = std::make_unique<PipeOutput>();
    if (job.wavStream) {
        const std::string header = WavStreamHeader(format);
        output->Write(header.data(), header.size());
    } else if (job.raw && RawFormatName(*job.raw) != RawFormatName(format)) {
        throw Failure("standard output: the result is " + RawFormatName(format) + ", not " +
                      RawFormatName(*job.raw));
    }
    return std::make_unique<RawWriter>(std::move(output), format);
}

void CheckSideFile(const CleanJob& job, const std::string& path) {
    std::error_code error;
    for (const InputFile& input : job.inputs) {
        if (fs::equivalent(input.path, path, error)) {
            throw Failure(path, "is also an input");
        }
    }
    const auto target = [&error](const std::string& file) {
        return fs::weakly_canonical(fs::absolute(FollowLinks(file).value_or(file), error), error);
    };
    if (target(path) == target(job.output)) {
        throw Failure(path, "is also the output");
    }
    const std::array others = {job.log == kPipe ? "" : job.log, job.reportPage, job.spectrogram};
    const auto count = std::count_if(others.begin(), others.end(), [&](const std::string& other) {
        return !other.empty() && target(other) == target(path);
    });
    if (count > 1) {
        throw Failure(path, "is named for two of --log, --report and --spectrogram");
    }
}
