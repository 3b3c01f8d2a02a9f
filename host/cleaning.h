#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "host/aligned_stream.h"
#include "host/audio_stream.h"
#include "host/clean.h"
#include "host/job_files.h"
#include "host/level_meter.h"
#include "host/loudness_pass.h"
#include "host/progress_bar.h"
#include "host/report.h"
#include "host/signal_tap.h"
#include "host/source_feed.h"
#include "host/timeline.h"

/// One job in the course of its processing: the sources, the stream and the meters.
template <typename Sample>
class Cleaning {
public:
    /// @param reversed see Timeline
    /// @param tap receives the signal; null for none
    Cleaning(const CleanJob& job, Sources sources,
             std::vector<std::vector<audio_filter::Stretch>> reversed, SignalTap* tap = nullptr);

    /// Processes the sources to their end and writes the output. Throws Failure.
    Report Run(const ProgressOutput& progress);

private:
    using Block = std::vector<Sample>;

    std::optional<std::int64_t> Length() const;
    void Prime();
    void ApplySettings();
    std::size_t PushBlock(AudioSink& sink);
    Block TakeBlocks();
    void Measure(Block blocks);
    void MeasureBefore(const Block& block);
    void Finish(AudioSink& sink);
    void Write(AudioSink& sink, const Block& cleaned);
    void Deliver(AudioSink& sink, const Block& output);
    void NoteVerdicts(std::size_t frames);
    void NoteCorrection(int source, std::int64_t frames);
    std::vector<std::string> Notes() const;
    Report MakeReport(double elapsed) const;
    double Seconds(std::int64_t frames) const;

    CleanJob mJob;
    std::vector<std::string> mConversions;
    std::vector<std::string> mSinkNotes;
    AudioFormat mFormat;
    Timeline mTimeline;
    AlignedStream<Sample> mStream;
    std::optional<AlignedStream<Sample>>
        mMix;                           ///< of several sources, not processed, to measure it
    std::optional<LevelMeter> mBefore;  ///< none without a summary
    std::optional<LevelMeter> mAfter;
    std::optional<LoudnessPass<Sample>> mLoudness;  ///< none where the loudness is left
    SignalTap* mTap;
    std::deque<SourceFeed<Sample>> mFeeds;
    std::vector<StreamNotice> mNotices;
    std::int64_t mFrames = 0;  ///< pushed so far
    std::int64_t mMusicFrames = 0;
    std::int64_t mCorrectedFrames = 0;  ///< of all processed sources
    std::vector<CorrectedStretch> mCorrected;
};
