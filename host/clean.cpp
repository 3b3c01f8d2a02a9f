#include "host/clean.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <deque>
#include <memory>
#include <utility>

#include "host/failure.h"
#include "host/filter_stream.h"
#include "host/interrupt.h"
#include "host/job_files.h"
#include "host/log_file.h"
#include "host/music_meter.h"
#include "host/progress_bar.h"
#include "host/source_feed.h"
#include "units/audio_mixing.h"

namespace {

using Clock = std::chrono::steady_clock;
std::string FormatName(const AudioFormat& format) {
    return std::to_string(format.sampleRate) + " Hz " + (format.channels == 1 ? "mono" : "stereo");
}

/// Inputs that are converted to the rate and channels of the first one.
std::vector<std::string> Conversions(const CleanJob& job, const Sources& sources) {
    std::vector<std::string> conversions;
    const AudioFormat& common = sources.front()->Format();
    for (std::size_t i = 1; i < sources.size(); ++i) {
        const AudioFormat& own = sources[i]->Format();
        if (own.sampleRate != common.sampleRate || own.channels != common.channels) {
            conversions.push_back(job.inputs[i].path + ": converted from " + FormatName(own) +
                                  " to " + FormatName(common));
        }
    }
    return conversions;
}

/// Whether any setting selects another suppression level than the filter's default.
bool SelectsOtherLevel(const CleanJob& job) {
    FilterSettings settings = job.settings;
    bool selects = settings.denoiseLevel.value_or(3) != 3;
    for (const SettingsChange& change : job.changes) {
        for (const auto& [name, value] : change.values) {
            ApplySetting(settings, name, value);
        }
        selects = selects || settings.denoiseLevel.value_or(3) != 3;
    }
    return selects;
}

void ThrowIfInterrupted() {
    if (Interrupted()) {
        throw Failure("interrupted");
    }
}

template <typename Sample>
class Cleaning {
public:
    Cleaning(const CleanJob& job, Sources sources)
        : mJob(job),
          mConversions(Conversions(job, sources)),
          mFormat(sources.front()->Format()),
          mFilterFormat(mFormat),
          mBefore(mFormat),
          mAfter(mFormat),
          mMusicMeter(mFormat),
          mSettings(job.settings) {
        if (mFormat.channels == 1 && SelectsOtherLevel(job)) {
            // The filter does not remember the level of a mono stream: pass two equal channels.
            mFilterFormat.channels = 2;
        }
        for (std::unique_ptr<AudioSource>& source : sources) {
            mFeeds.emplace_back(std::move(source), mFilterFormat);
        }
        mMixing.Init(mFormat.samples == SampleFormat::kS16 ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT);
    }

    Report Run(std::ostream* progress) {
        const Clock::time_point start = Clock::now();
        const std::optional<std::int64_t> length = Length();
        const std::unique_ptr<AudioSink> sink = OpenOutput(mJob, mFormat, length);
        FilterStream<Sample> stream(
            Settings(), mFilterFormat, SourceTypes(),
            [&](const Block& cleaned) { Write(*sink, ToOutputChannels(cleaned)); });
        {
            ProgressBar bar(progress, length);
            while (const std::size_t frames = PushBlock(stream)) {
                bar.Advance(static_cast<std::int64_t>(frames));
                ThrowIfInterrupted();
            }
        }
        if (mFrames == 0) {
            throw Failure(mJob.inputs.front().path, "contains no audio");
        }
        stream.Finish();
        sink->Commit();
        const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
        return MakeReport(stream.Record(), elapsed);
    }

private:
    using Block = std::vector<Sample>;

    std::vector<AVSourceType> SourceTypes() const {
        std::vector<AVSourceType> types;
        for (const InputFile& input : mJob.inputs) {
            types.push_back(input.type);
        }
        return types;
    }

    /// Frames of the longest source, if all lengths are known.
    std::optional<std::int64_t> Length() const {
        std::int64_t longest = 0;
        for (const SourceFeed<Sample>& feed : mFeeds) {
            const std::optional<std::int64_t> frames = feed.Frames();
            if (!frames) {
                return std::nullopt;
            }
            longest = std::max(longest, *frames);
        }
        return longest;
    }

    /// Processes one block of each source, up to the next change. @return its frames; 0 at the end
    std::size_t PushBlock(FilterStream<Sample>& stream) {
        ApplyChanges(stream);
        std::size_t wanted = mJob.blockSizes.Next(mFormat.sampleRate);
        if (mChange < mJob.changes.size()) {
            const std::int64_t left = FrameOf(mJob.changes[mChange]) - mFrames;
            wanted = std::min(wanted, static_cast<std::size_t>(left));
        }
        std::size_t frames = 0;
        for (SourceFeed<Sample>& feed : mFeeds) {
            frames = std::max(frames, feed.Fill(wanted));
        }
        if (frames == 0) {
            return 0;
        }
        Block blocks;
        for (SourceFeed<Sample>& feed : mFeeds) {
            feed.Take(frames, blocks);
        }
        const Block input = ToOutputChannels(ChainInput(blocks));
        mBefore.Add(input);
        mMusicMeter.Add(input);
        stream.Push(std::move(blocks));
        mFrames += static_cast<std::int64_t>(frames);
        return frames;
    }

    void ApplyChanges(FilterStream<Sample>& stream) {
        while (mChange < mJob.changes.size() && FrameOf(mJob.changes[mChange]) <= mFrames) {
            for (const auto& [name, value] : mJob.changes[mChange].values) {
                ApplySetting(mSettings, name, value);
            }
            stream.Apply(Settings());
            ++mChange;
        }
    }

    /// The current settings; the phase check needs two channels.
    FilterSettings Settings() const {
        FilterSettings settings = mSettings;
        settings.phaseCheck = settings.phaseCheck && mFormat.channels == 2;
        return settings;
    }

    std::int64_t FrameOf(const SettingsChange& change) const {
        return std::llround(change.seconds * mFormat.sampleRate);
    }

    /// The input of the filter's chain: the mix of all sources, or the first one.
    Block ChainInput(const Block& blocks) {
        const std::size_t perSource = blocks.size() / mFeeds.size();
        Block input(blocks.begin(), blocks.begin() + static_cast<std::ptrdiff_t>(perSource));
        if (mFeeds.size() > 1 && mSettings.mix) {
            int size = static_cast<int>(blocks.size() * sizeof(Sample));
            mMixing.Process(reinterpret_cast<const char*>(blocks.data()),
                            reinterpret_cast<char*>(input.data()), size,
                            static_cast<int>(mFeeds.size()));
        }
        return input;
    }

    /// Mono again, where two equal channels were passed to the filter.
    Block ToOutputChannels(const Block& block) const {
        if (mFilterFormat.channels == mFormat.channels) {
            return block;
        }
        Block left;
        for (std::size_t i = 0; i < block.size(); i += 2) {
            left.push_back(block[i]);
        }
        return left;
    }

    void Write(AudioSink& sink, const Block& cleaned) {
        mAfter.Add(cleaned);
        sink.Write(cleaned.data(), cleaned.size() / static_cast<std::size_t>(mFormat.channels));
    }

    Report MakeReport(const FilterRecord& record, double elapsed) const {
        const auto seconds = [&](std::int64_t frames) {
            return static_cast<double>(frames) / mFormat.sampleRate;
        };
        Report report = {};
        for (const InputFile& input : mJob.inputs) {
            report.inputs.push_back(input.path);
        }
        report.output = mJob.output;
        report.format = mFormat;
        report.duration = seconds(mFrames);
        report.elapsed = elapsed;
        report.loudnessBefore = mBefore.Loudness();
        report.loudnessAfter = mAfter.Loudness();
        report.peakBefore = mBefore.Peak();
        report.peakAfter = mAfter.Peak();
        report.levels = CompareWindows(mBefore.Powers(), mAfter.Powers());
        report.settings = mJob.settings;
        report.settings.phaseCheck = report.settings.phaseCheck && mFormat.channels == 2;
        report.record = record;
        report.conversions = mConversions;
        report.music = seconds(mMusicMeter.MusicFrames());
        report.phaseCorrected = seconds(record.correctedFrames);
        return report;
    }

    // A copy: drawing block sizes changes it.
    CleanJob mJob;
    std::vector<std::string> mConversions;
    AudioFormat mFormat;        ///< of the output
    AudioFormat mFilterFormat;  ///< of the filter's input
    LevelMeter mBefore;
    LevelMeter mAfter;
    MusicMeter<Sample> mMusicMeter;
    AudioMixing mMixing;
    FilterSettings mSettings;  ///< current
    std::deque<SourceFeed<Sample>> mFeeds;
    std::size_t mChange = 0;   ///< the next one
    std::int64_t mFrames = 0;  ///< pushed so far
};

}  // namespace

Report Clean(const CleanJob& job, std::ostream* progress) {
    Sources sources = OpenInputs(job);
    std::optional<LogFile> log;
    if (!job.log.empty()) {
        CheckLogPath(job);
        log.emplace(job.log, job.logLevel);
    }
    try {
        Report report =
            sources.front()->Format().samples == SampleFormat::kS16
                ? std::make_unique<Cleaning<short>>(job, std::move(sources))->Run(progress)
                : std::make_unique<Cleaning<float>>(job, std::move(sources))->Run(progress);
        if (log) {
            log->Close();
        }
        return report;
    } catch (const Failure&) {
        ThrowIfInterrupted();  // the signal may have ended a write
        throw;
    }
}
