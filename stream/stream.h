#pragma once

#include <memory>

#include "stream/export.h"
#include "stream/stream_types.h"

namespace audio_filter {

/// Cleans an audio stream in real time, at any rate and in blocks of any length. Every call returns as
/// many frames as it receives; the output is the processed input, delayed by a constant latency.
///
///     audio_filter::Stream stream;
///     stream.Init({.sampleRate = 48000, .channels = 2, .samples = SAMPLE_FMT_FLT}, {});
///     const void* in[] = {captured};
///     void* out[] = {cleaned};
///     stream.Process(in, out, frames);   // cleaned[0] is captured[0] of Latency() frames ago
///
/// Stages, in this order: phase correction of each stereo source, mixing, noise suppression, gain.
/// Each change of a setting or of a verdict crossfades over 10 ms; a change of the suppression level is
/// smoothed by the suppressor's overlapping windows. With every stage off
/// and one source, the output is the delayed input, bit for bit.
///
/// Processing blocks. The stream collects 320 samples of the suppressor's rate: 10 ms at 32000 Hz and
/// its divisors, 6.7 ms at 48000 Hz and its multiples, 7.3 ms at 44100 Hz. The output does not depend on the
/// length of the host's blocks. Noise is suppressed in 16 bits; wider or resampled input is dithered for it.
///
/// Rates. Above 24000 up to 48000 Hz, the suppressor runs at the rate of the stream. Lower rates are
/// resampled by 2 or 4 to 24000..48000 Hz, higher ones by 1/2, 1/3 or 1/4; the band that the resampling
/// removes is attenuated by the gain of the band below it and added back.
///
/// Result codes (common/result_code.h): RESULT_OK, RESULT_BAD_ARGUMENT, RESULT_INVALID,
/// RESULT_NOT_INITIALISED.
///
/// Threads. Process and Drain never allocate, lock or enter the kernel; only one thread may call them. The
/// settings and the reports are atomic.
class AUDIO_FILTER_STREAM_API Stream {
public:
    /// [setup] Not initialised.
    Stream();
    /// [setup]
    ~Stream();
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    /// [setup] Starts a stream. Throws std::bad_alloc when memory runs out: the stream is then not
    /// initialised.
    /// @return RESULT_OK; RESULT_INVALID for a format out of range: an earlier stream is then kept
    int Init(const StreamFormat& format, const StreamSettings& settings);

    /// [setup] Starts again with the same format and settings: no history, no pending output. Throws
    /// std::bad_alloc when memory runs out: the stream is then not initialised.
    /// @return RESULT_OK, RESULT_NOT_INITIALISED
    int Reset();

    /// [audio] Processes a block.
    /// @param in interleaved: one buffer per source, of frames * channels samples; planar: one buffer
    ///        of `frames` samples per channel of each source, all channels of source 0 first. Samples
    ///        need the alignment of their type.
    /// @param out one buffer, or one per channel, of the same layout. A buffer may be one of `in` if it
    ///        holds the same channel, but must not overlap any otherwise.
    /// @param frames 1..StreamFormat::maxFrames
    /// @return RESULT_OK; RESULT_NOT_INITIALISED; RESULT_BAD_ARGUMENT for a null buffer or frames below
    ///         1; RESULT_INVALID for too many frames. Nothing is read or written unless RESULT_OK.
    int Process(const void* const* in, void* const* out, int frames);

    /// [audio] Ends the input and returns what is pending: Latency() frames since the last Process,
    /// over as many calls as it takes. A later call of Process continues after this silence.
    /// @param out as for Process
    /// @param frames room in `out`, 1..StreamFormat::maxFrames
    /// @return frames written, 0 when nothing is pending; 0 for invalid arguments, too
    int Drain(void* const* out, int frames);

    /// [any] Applies from the next processing block on; does nothing before Init.
    void SetSettings(const StreamSettings& settings);

    /// [any] Sets settings if the latest ones, clamped, are still `expected`: for hosts whose threads change different
    /// settings. Does nothing before Init.
    /// @return false if they are not
    bool ReplaceSettings(const StreamSettings& expected, const StreamSettings& settings);

    /// [any] The latest settings, clamped.
    StreamSettings Settings() const;

    /// [any] The delay of the output, in frames; 0 before Init. It depends on the rate alone.
    int Latency() const;

    /// [any] The frames of a processing block; 0 before Init.
    int BlockFrames() const;

    /// [any] Whether music is detected; false unless MusicMode::kKeep and suppression are on.
    bool IsMusic() const;

    /// [any] Whether the left channel of a source is negated. @param source 0..15
    bool IsReversed(int source) const;

    /// [any] The attenuation by noise suppression of the last processing block, in dB: 0 or above, 0
    /// while it is off and in digital silence.
    float Reduction() const;

    /// [any] Takes the oldest event, from one thread at a time. The stream keeps 64 events that have not
    /// been taken and loses later ones.
    /// @return false if there is none
    bool NextEvent(StreamEvent& event);

private:
    class AUDIO_FILTER_STREAM_LOCAL Engine;
    std::unique_ptr<Engine> mEngine;
};

}  // namespace audio_filter
