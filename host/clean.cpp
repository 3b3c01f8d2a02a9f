#include "host/clean.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <vector>

#include "host/audio_reader.h"
#include "host/audio_writer.h"
#include "host/failure.h"
#include "host/interrupt.h"
#include "host/progress_bar.h"
#include "host/stream_cleaner.h"

namespace {

using Clock = std::chrono::steady_clock;

void RefuseSameFile(const CleanJob& job) {
    std::error_code error;
    if (std::filesystem::equivalent(job.input, job.output, error)) {
        throw Failure(job.output, "is the input itself");
    }
}

template <typename Sample>
Report CleanAs(const CleanJob& job, AudioReader& reader, std::ostream* progress) {
    const Clock::time_point start = Clock::now();
    const AudioFormat& format = reader.Format();
    AudioWriter writer(job.output, format, reader.Frames());
    LevelMeter before(format);
    LevelMeter after(format);
    const auto channels = static_cast<std::size_t>(format.channels);
    StreamCleaner<Sample> cleaner(job.settings, format, [&](const std::vector<Sample>& cleaned) {
        after.Add(cleaned);
        writer.Write(cleaned.data(), cleaned.size() / channels);
    });

    const auto blockFrames = static_cast<std::size_t>(
        std::max<std::int64_t>(1, std::int64_t{format.sampleRate} * job.blockMs / 1000));
    std::int64_t frames = 0;
    {
        ProgressBar bar(progress, reader.Frames());
        std::vector<Sample> block(blockFrames * channels);
        while (const std::size_t read = reader.Read(block.data(), blockFrames)) {
            block.resize(read * channels);
            before.Add(block);
            cleaner.Push(block);
            block.resize(blockFrames * channels);
            frames += static_cast<std::int64_t>(read);
            bar.Advance(static_cast<std::int64_t>(read));
            if (Interrupted()) {
                throw Failure("interrupted");
            }
        }
    }
    cleaner.Finish();
    writer.Commit();

    Report report = {};
    report.input = job.input;
    report.output = job.output;
    report.format = format;
    report.processingRate = cleaner.ProcessingRate();
    report.duration = static_cast<double>(frames) / format.sampleRate;
    report.elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    report.loudnessBefore = before.Loudness();
    report.loudnessAfter = after.Loudness();
    report.peakBefore = before.Peak();
    report.peakAfter = after.Peak();
    report.levels = CompareWindows(before.Powers(), after.Powers());
    report.settings = job.settings;
    if (cleaner.Chain().ChecksPhase()) {
        report.phaseCorrected =
            static_cast<double>(cleaner.Chain().CorrectedFrames()) / cleaner.ProcessingRate();
    }
    return report;
}

}  // namespace

Report Clean(const CleanJob& job, std::ostream* progress) {
    AudioReader reader(job.input);
    RefuseSameFile(job);
    return reader.Format().kind == SampleKind::kS16 ? CleanAs<short>(job, reader, progress)
                                                    : CleanAs<float>(job, reader, progress);
}
