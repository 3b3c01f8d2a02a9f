#pragma once

#include <gst/audio/audio.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "stream/stream.h"

namespace audio_filter {

/// A stream between buffers with timestamps. Output has the timestamps of the input it stems from: the latency is
/// dropped at the start of a run of contiguous buffers and drained at its end.
class TimedStream {
public:
    /// The settings for the frames from a timestamp on, which may be GST_CLOCK_TIME_NONE.
    using SettingsAt = std::function<StreamSettings(GstClockTime timestamp)>;

    /// Starts with a format. Throws std::bad_alloc.
    /// @return false if the stream does not support it
    bool Init(const GstAudioInfo& info, const StreamSettings& settings);

    /// Discards all history and pending output. Throws std::bad_alloc.
    void Reset();

    /// Whether the buffer follows the previous one without a gap or an overlap, or starts a run.
    bool Continues(const GstBuffer* buffer) const;

    /// Processes a writable buffer in place and moves it to the time of its new content.
    /// @return the frames that are left, -1 if the buffer does not hold whole frames of the format
    gssize Process(GstBuffer* buffer, const SettingsAt& settingsAt);

    /// Ends the run. The stream keeps its estimate of the noise.
    /// @return what was pending, null if nothing was
    GstBuffer* Drain();

    /// @return 0 before Init
    GstClockTime Latency() const { return Duration(mLatency); }

    /// @return the timestamp of an input frame since Init or Reset, counted as by StreamEvent::frame
    GstClockTime TimestampOf(std::int64_t frame) const;

    Stream& Audio() { return mStream; }
    const GstAudioInfo& Info() const { return mInfo; }

private:
    static constexpr std::size_t kMostChannels = 8;
    using Planes = std::array<std::byte*, kMostChannels>;

    GstClockTime Duration(std::size_t frames) const;
    void ProcessMapped(const GstAudioBuffer& mapped, GstClockTime start,
                       const SettingsAt& settingsAt);
    void ProcessPiece(const Planes& planes, std::size_t count, std::size_t frames,
                      std::size_t frameBytes);
    void MarkGap(GstBuffer* buffer, bool isGap, std::size_t frames);
    void DropFirst(GstBuffer* buffer, std::size_t frames) const;
    void SetTimes(GstBuffer* buffer, GstClockTime reference, std::size_t late,
                  std::size_t frames) const;

    GstAudioInfo mInfo = {};
    Stream mStream;
    std::vector<float> mAligned;              ///< a piece of a buffer whose samples are not aligned
    std::size_t mPieceFrames = 0;             ///< 10 ms, the step of controlled settings
    std::size_t mLatency = 0;                 ///< frames
    std::size_t mHead = 0;                    ///< frames to drop until the run has output
    bool mRunning = false;                    ///< within a run
    GstClockTime mEnd = GST_CLOCK_TIME_NONE;  ///< of the input so far
    std::int64_t mReceived = 0;               ///< frames since Init or Reset
    std::size_t mSilent = 0;                  ///< frames of gap buffers since the last sound
};

}  // namespace audio_filter
