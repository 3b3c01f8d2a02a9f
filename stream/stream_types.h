#pragma once

#include <cstdint>
#include <optional>

#include "common/media_process.h"

/// @file
/// The format, the settings and the events of a stream (stream/stream.h).

namespace audio_filter {

/// What a stream carries. All sources and the output share it.
struct StreamFormat {
    int sampleRate = 48000;               ///< Hz, 8000..192000
    int channels = 1;                     ///< 1..8
    SampleFmt samples = SAMPLE_FMT_FLTP;  ///< 16-bit (1), float (3) or their planar forms (6, 8)
    int sources = 1;                      ///< 1..16
    int maxFrames = 192000;               ///< longest block, in frames, 1..192000
    bool finite = false;  ///< floats that are not finite count as 0, with every stage off as well
};

/// How suppression treats music.
enum class MusicMode : std::uint8_t {
    kIgnore,  ///< as any other signal; music detection does not run
    kKeep     ///< while music is detected, noise is suppressed at level 0
};

/// What a stream does. Out-of-range values are clamped, a gain of NaN to 0.
struct StreamSettings {
    std::optional<int> suppression = 2;  ///< level, 0 mild .. 3 most aggressive; none for off
    std::optional<float> gain = {};      ///< gain curve, 0..1 (units/audio_gain.h); none for off
    bool phaseCheck = false;             ///< stereo only: detect a reversed channel and correct it
    bool mix = true;                     ///< all sources; false for the first one alone
    MusicMode music = MusicMode::kIgnore;  ///< how suppression treats music
    bool highBand = true;        ///< above 48000 Hz: keep what lies above the suppressor's band
    std::uint16_t reversed = 0;  ///< stereo only: bit n negates the left channel of source n

    /// [any] Whether all settings are equal; a gain of NaN equals none.
    bool operator==(const StreamSettings&) const = default;
};

/// A change in a stream.
struct StreamEvent {
    /// What has changed.
    enum class Type : std::uint8_t {
        kSuppression,  ///< `on`: noise suppression was switched
        kGain,         ///< `on`: the gain curve was switched
        kPhaseCheck,   ///< `on`: the phase check was switched
        kMixing,       ///< `on`: mixing was switched
        kMusic,        ///< `on`: the verdict of music detection
        kReversed      ///< `on`: whether the left channel of `source` is now negated
    };

    Type type = Type::kSuppression;  ///< what has changed
    bool on = false;                 ///< what it has changed to
    int source = 0;                  ///< 0..15, for kReversed
    std::int64_t frame = 0;  ///< frames that the stream had received at the start of the block
};

}  // namespace audio_filter
