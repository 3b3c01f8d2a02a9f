#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "host/clean.h"
#include "host/filter_settings.h"
#include "stream/polarity_scan.h"
#include "stream/stream_types.h"

/// The settings in effect from some point of a stream on.
struct SettingsAt {
    double seconds;
    FilterSettings settings;
};

/// The settings over the course of a job.
class Timeline {
public:
    /// @param format of the output
    /// @param reversed where the left channel of each source is reversed; empty without a scan
    Timeline(const CleanJob& job, const AudioFormat& format,
             std::vector<std::vector<audio_filter::Stretch>> reversed);

    /// Moves forward to a frame. @return whether the stream's settings change there
    bool MoveTo(std::int64_t frame);

    /// Frames until they may change next, at least 1; none after the last change.
    std::optional<std::int64_t> FramesLeft() const;

    /// The settings of the stream at the frame.
    audio_filter::StreamSettings ForStream() const;

    /// The settings in effect at the start, and after each change that has been reached: without what a
    /// source cannot have.
    const std::vector<SettingsAt>& Applied() const { return mApplied; }

    /// Whether noise is to be suppressed, but no microphone is among the sources.
    bool LacksMicrophone() const { return mWanted.denoiseLevel && !HasMicrophone(); }

    /// The times of the changes that have not been reached, in s.
    std::vector<double> NotReached() const;

private:
    std::int64_t FrameOf(double seconds) const;
    bool HasMicrophone() const;
    FilterSettings InEffect() const;

    const CleanJob& mJob;
    AudioFormat mFormat;
    std::vector<std::vector<audio_filter::Stretch>> mReversed;
    FilterSettings mWanted;
    std::vector<SettingsAt> mApplied;
    std::size_t mChange = 0;  ///< the next one
    std::int64_t mFrame = 0;
};
