#include "host/cleaning.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>

#include "host/channels.h"
#include "host/failure.h"
#include "host/interrupt.h"
#include "host/log_file.h"

namespace {

using audio_filter::StreamEvent;
using audio_filter::StreamSettings;

/// How much of the start of a file the stream processes backwards before it: the suppressor takes about a
/// second to estimate the noise.
constexpr double kPrimeSeconds = 2.0;

std::string FormatName(const AudioFormat& format) {
    return std::to_string(format.sampleRate) + " Hz " + ChannelsName(format.channels);
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

/// The mix alone, to measure it.
StreamSettings MixOnly(const StreamSettings& settings) {
    StreamSettings mix;
    mix.suppression.reset();
    mix.mix = settings.mix;
    return mix;
}

template <typename Sample>
void ReverseFrames(typename std::vector<Sample>::iterator begin,
                   typename std::vector<Sample>::iterator end, int channels) {
    std::reverse(begin, end);
    for (auto frame = begin; frame != end; frame += channels) {
        std::reverse(frame, frame + channels);
    }
}

template <typename Sample>
std::vector<float> AsFloats(const std::vector<Sample>& block) {
    std::vector<float> floats(block.size());
    std::transform(block.begin(), block.end(), floats.begin(), [](Sample s) { return ToFloat(s); });
    return floats;
}

std::string TextOf(const StreamEvent& event, std::size_t sources) {
    if (event.type == StreamEvent::Type::kMusic) {
        return event.on ? "music begins" : "music ends";
    }
    const std::string source =
        sources == 1 ? "" : "source " + std::to_string(event.source + 1) + ": ";
    return source + (event.on ? "left channel reversed, inverted from here"
                              : "left channel no longer inverted");
}

}  // namespace

template <typename Sample>
Cleaning<Sample>::Cleaning(const CleanJob& job, Sources sources,
                           std::vector<std::vector<audio_filter::Stretch>> reversed, SignalTap* tap)
    : mJob(job),
      mConversions(Conversions(job, sources)),
      mFormat(sources.front()->Format()),
      mTimeline(mJob, mFormat, std::move(reversed)),
      mStream(mFormat, sources.size(), mTimeline.ForStream()),
      mTap(tap) {
    if (job.summarises) {
        mBefore.emplace(mFormat);
        mAfter.emplace(mFormat);
    }
    if (sources.size() > 1 && (job.summarises || tap != nullptr)) {
        mMix.emplace(mFormat, sources.size(), MixOnly(mTimeline.ForStream()));
    }
    if (job.loudness) {
        mLoudness.emplace(mFormat, *job.loudness, job.output);
    }
    for (std::unique_ptr<AudioSource>& source : sources) {
        mFeeds.emplace_back(std::move(source), mFormat);
    }
}

template <typename Sample>
Report Cleaning<Sample>::Run(const ProgressOutput& progress) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    const std::optional<std::int64_t> length = Length();
    const std::unique_ptr<AudioSink> sink = OpenOutput(mJob, mFormat, length);
    mSinkNotes = sink->Notes();
    Log(PROCESS_LOG_INFO, 0.0, SettingsText(mTimeline.Applied().front().settings));
    Prime();
    {
        ProgressBar bar(progress, length);
        while (const std::size_t frames = PushBlock(*sink)) {
            bar.Advance(static_cast<std::int64_t>(frames));
            if (Interrupted()) {
                throw Failure("interrupted");
            }
        }
    }
    if (mFrames == 0) {
        throw Failure(mJob.inputs.front().path, "contains no audio");
    }
    Finish(*sink);
    sink->Commit();
    return MakeReport(std::chrono::duration<double>(Clock::now() - start).count());
}

/// Frames of the longest source, if all lengths are known.
template <typename Sample>
std::optional<std::int64_t> Cleaning<Sample>::Length() const {
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

/// Lets the suppressor estimate the noise before the first frame: passes the start of the files backwards, so that
/// the signal is continuous where they begin.
template <typename Sample>
void Cleaning<Sample>::Prime() {
    StreamSettings settings = mTimeline.ForStream();
    if (!settings.suppression || !AreFiles(mJob)) {
        return;
    }
    const auto most = static_cast<std::size_t>(kPrimeSeconds * mFormat.sampleRate);
    std::size_t frames = 0;
    for (SourceFeed<Sample>& feed : mFeeds) {
        frames = std::max(frames, feed.Fill(most));
    }
    const std::size_t perSource = frames * static_cast<std::size_t>(mFormat.channels);
    Block blocks;
    for (std::size_t i = 0; i < mFeeds.size(); ++i) {
        mFeeds[i].Peek(frames, blocks);
        blocks.resize((i + 1) * perSource);
        ReverseFrames<Sample>(blocks.end() - static_cast<std::ptrdiff_t>(perSource), blocks.end(),
                              mFormat.channels);
    }
    // The detectors start with the first frame.
    settings.phaseCheck = false;
    settings.music = audio_filter::MusicMode::kIgnore;
    mStream.Controls().SetSettings(settings);
    mStream.Prime(blocks);
    ApplySettings();
}

template <typename Sample>
void Cleaning<Sample>::ApplySettings() {
    mStream.Controls().SetSettings(mTimeline.ForStream());
    if (mMix) {
        mMix->Controls().SetSettings(MixOnly(mTimeline.ForStream()));
    }
}

/// Processes one block of each source, up to the next change. @return its frames; 0 at the end
template <typename Sample>
std::size_t Cleaning<Sample>::PushBlock(AudioSink& sink) {
    const std::size_t changes = mTimeline.Applied().size();
    if (mTimeline.MoveTo(mFrames)) {
        ApplySettings();
    }
    for (std::size_t i = changes; i < mTimeline.Applied().size(); ++i) {
        const SettingsAt& applied = mTimeline.Applied()[i];
        Log(PROCESS_LOG_INFO, applied.seconds, SettingsText(applied.settings));
    }
    Block blocks = TakeBlocks();
    const std::size_t samples = static_cast<std::size_t>(mFormat.channels) * mFeeds.size();
    const std::size_t frames = blocks.size() / samples;
    if (frames == 0) {
        return 0;
    }
    const Block cleaned = mStream.Push(blocks);
    Measure(std::move(blocks));
    Write(sink, cleaned);
    NoteVerdicts(frames);
    mFrames += static_cast<std::int64_t>(frames);
    return frames;
}

template <typename Sample>
auto Cleaning<Sample>::TakeBlocks() -> Block {
    std::size_t wanted = mJob.blockSizes.Next(mFormat.sampleRate);
    if (const std::optional<std::int64_t> left = mTimeline.FramesLeft()) {
        wanted = std::min(wanted, static_cast<std::size_t>(*left));
    }
    std::size_t frames = 0;
    for (SourceFeed<Sample>& feed : mFeeds) {
        frames = std::max(frames, feed.Fill(wanted));
    }
    Block blocks;
    for (SourceFeed<Sample>& feed : mFeeds) {
        feed.Take(frames, blocks);
    }
    return blocks;
}

template <typename Sample>
void Cleaning<Sample>::Measure(Block blocks) {
    if (mMix) {
        MeasureBefore(mMix->Push(blocks));
    } else {
        MeasureBefore(blocks);
    }
}

template <typename Sample>
void Cleaning<Sample>::MeasureBefore(const Block& block) {
    if (mBefore) {
        mBefore->Add(block);
    }
    if (mTap != nullptr) {
        mTap->AddBefore(AsFloats(block));
    }
}

template <typename Sample>
void Cleaning<Sample>::Finish(AudioSink& sink) {
    if (mMix) {
        MeasureBefore(mMix->Drain());
    }
    Write(sink, mStream.Drain());
    if (!mLoudness) {
        return;
    }
    mLoudness->Finish();
    for (Block block = mLoudness->Next(); !block.empty(); block = mLoudness->Next()) {
        Deliver(sink, block);
        if (Interrupted()) {
            throw Failure("interrupted");
        }
    }
}

template <typename Sample>
void Cleaning<Sample>::Write(AudioSink& sink, const Block& cleaned) {
    if (mTap != nullptr) {
        mTap->AddAfter(AsFloats(cleaned));
    }
    if (mLoudness) {
        mLoudness->Add(cleaned);
    } else {
        Deliver(sink, cleaned);
    }
}

template <typename Sample>
void Cleaning<Sample>::Deliver(AudioSink& sink, const Block& output) {
    if (mAfter) {
        mAfter->Add(output);
    }
    sink.Write(output.data(), output.size() / static_cast<std::size_t>(mFormat.channels));
}

template <typename Sample>
void Cleaning<Sample>::NoteVerdicts(std::size_t frames) {
    audio_filter::Stream& stream = mStream.Controls();
    for (StreamEvent event; stream.NextEvent(event);) {
        if (event.type != StreamEvent::Type::kMusic && event.type != StreamEvent::Type::kReversed) {
            continue;
        }
        const std::int64_t frame = event.frame - static_cast<std::int64_t>(mStream.Primed());
        const double seconds = Seconds(std::max<std::int64_t>(frame, 0));
        const auto kind = event.type == StreamEvent::Type::kMusic ? StreamNotice::Kind::kMusic
                                                                  : StreamNotice::Kind::kReversed;
        mNotices.push_back({seconds, TextOf(event, mFeeds.size()), kind, event.on});
        Log(PROCESS_LOG_INFO, seconds, mNotices.back().text);
    }
    const auto count = static_cast<std::int64_t>(frames);
    if ((mFrames + count) / mFormat.sampleRate > mFrames / mFormat.sampleRate) {
        Log(PROCESS_LOG_DEBUG, Seconds(mFrames + count),
            "noise reduced by " + std::to_string(std::lround(stream.Reduction())) + " dB");
    }
    mMusicFrames += stream.IsMusic() ? count : 0;
    const std::size_t processed = mTimeline.Applied().back().settings.mix ? mFeeds.size() : 1;
    for (std::size_t source = 0; source < processed; ++source) {
        if (stream.IsReversed(static_cast<int>(source))) {
            NoteCorrection(static_cast<int>(source), count);
        }
    }
}

/// Notes that a left channel was inverted in the block that begins at mFrames.
template <typename Sample>
void Cleaning<Sample>::NoteCorrection(int source, std::int64_t frames) {
    mCorrectedFrames += frames;
    const double begin = Seconds(mFrames);
    const double end = Seconds(mFrames + frames);
    const auto last = std::find_if(mCorrected.rbegin(), mCorrected.rend(),
                                   [source](const auto& each) { return each.source == source; });
    if (last != mCorrected.rend() && last->end == begin) {
        last->end = end;
    } else {
        mCorrected.push_back({begin, end, source});
    }
}

template <typename Sample>
std::vector<std::string> Cleaning<Sample>::Notes() const {
    std::vector<std::string> notes = mConversions;
    if (mTimeline.LacksMicrophone()) {
        notes.emplace_back("no noise is suppressed: no microphone is among the sources");
    }
    if (mLoudness && !mLoudness->Gain().note.empty()) {
        notes.push_back(mLoudness->Gain().note);
    }
    for (const double seconds : mTimeline.NotReached()) {
        char time[32];
        std::snprintf(time, sizeof(time), "%g s", seconds);
        notes.push_back(std::string("the change at ") + time + " is beyond the end: not applied");
    }
    notes.insert(notes.end(), mSinkNotes.begin(), mSinkNotes.end());
    return notes;
}

template <typename Sample>
Report Cleaning<Sample>::MakeReport(double elapsed) const {
    Report report = {};
    for (const InputFile& input : mJob.inputs) {
        report.inputs.push_back(input.path);
    }
    report.output = mJob.output;
    report.format = mFormat;
    report.duration = Seconds(mFrames);
    report.elapsed = elapsed;
    report.hasLevels = mBefore.has_value();
    if (mLoudness) {
        report.loudnessGain = mLoudness->Gain().db;
    }
    if (mBefore) {
        report.loudnessBefore = mBefore->Loudness();
        report.loudnessAfter = mAfter->Loudness();
        report.peakBefore = mBefore->Peak();
        report.peakAfter = mAfter->Peak();
        report.levels = CompareWindows(mBefore->Powers(), mAfter->Powers());
    }
    report.settings = mTimeline.Applied();
    report.notices = mNotices;
    report.notes = Notes();
    report.music = Seconds(mMusicFrames);
    report.phaseCorrected = Seconds(mCorrectedFrames);
    report.corrected = mCorrected;
    return report;
}

template <typename Sample>
double Cleaning<Sample>::Seconds(std::int64_t frames) const {
    return static_cast<double>(frames) / mFormat.sampleRate;
}

template class Cleaning<short>;
template class Cleaning<float>;
