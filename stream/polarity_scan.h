#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "stream/export.h"

namespace audio_filter {

/// Frames of a recording, from `begin` up to but not including `end`.
struct Stretch {
    std::int64_t begin;  ///< the first frame
    std::int64_t end;    ///< the frame after the last one

    /// [any] Whether both are the same frames.
    bool operator==(const Stretch&) const = default;
};

/// Finds where the left channel of a stereo recording is reversed, for hosts that have the whole
/// recording: from its first reversed frame on, not only from the verdict, which comes later. The verdict
/// is that of PhaseCheck: more than 70 % of all audible frames so far are opposed. A reversal that begins
/// after a long stretch in phase is therefore missed or found late: after 8 s in phase, it takes 18.7 s.
///
///     PolarityScan scan(48000);
///     while (...) scan.Add(interleaved, frames);
///     for (const Stretch& stretch : scan.Finish()) ...
class AUDIO_FILTER_STREAM_API PolarityScan {
public:
    /// [setup] @param sampleRate Hz, 8000..192000
    explicit PolarityScan(int sampleRate);
    /// [setup]
    ~PolarityScan();
    PolarityScan(const PolarityScan&) = delete;
    PolarityScan& operator=(const PolarityScan&) = delete;

    /// [audio] Adds the next frames.
    /// @param samples 2 * frames, interleaved, full scale at 1
    /// @param frames any number
    void Add(const float* samples, std::size_t frames);

    /// [setup] Ends the recording. @return the reversed stretches, in order
    std::vector<Stretch> Finish();

private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};

}  // namespace audio_filter
