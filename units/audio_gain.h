#pragma once

#include "common/export.h"
#include "common/media_process.h"

/// Raises the loudness of PCM in place with a fixed, memoryless curve of two slopes: quiet samples are
/// amplified, loud ones compressed, and full scale remains (about) full scale. It shapes the
/// waveform and follows no level. Every sample is mapped alike, in every channel and layout.
///
///     AudioGain gain;
///     gain.Init(SAMPLE_FMT_S16);
///     gain.SetGain(0.5F);
///     gain.Process(bytes, size);
///
/// Result codes: RESULT_OK, RESULT_BAD_ARGUMENT, RESULT_INVALID for an unsupported format at Init,
/// RESULT_NOT_INITIALISED, RESULT_UNSUPPORTED_FORMAT. Supports one thread at a time.
class AUDIO_FILTER_API AudioGain {
public:
    /// [setup] Not initialised, with gain 0.8.
    AudioGain() = default;

    /// [setup] Sets the sample format, and the gain to 0.8.
    /// @param fmt 16-bit (1, 6) or 32-bit float (3, 8)
    /// @return RESULT_OK; RESULT_INVALID for any other format: the unit is then not initialised
    int Init(SampleFmt fmt);

    /// [audio]
    bool IsInited();

    /// [setup] Back to not initialised, with gain 0, so that the overload which needs no Init leaves
    /// samples unchanged.
    /// @return true
    bool Clear();

    /// [audio] Sets the strength of the curve. Needs no Init; Init overrides it.
    /// @param g clamped to 0..1, NaN to 0; 0 leaves samples unchanged
    /// @return true
    bool SetGain(float g);

    /// [audio] Maps a block in place, although it is declared const. Unless the gain is 0, every float
    /// result is in -1..1 (-1 for NaN).
    /// @param buf samples at any address
    /// @param size bytes, at least 1; the bytes of an incomplete last sample are unchanged
    /// @return RESULT_OK; RESULT_BAD_ARGUMENT for a null buffer or a size below 1;
    ///         RESULT_NOT_INITIALISED
    int Process(const char* buf, int size);

    /// [audio] The same for the sample format in the call, initialised or not, without checks; does
    /// nothing for a null buffer or a size without a whole sample.
    /// @param buf samples at any address
    /// @param size bytes, any number
    /// @param fmt SAMPLE_FMT_S16 or SAMPLE_FMT_FLT, for planar samples, too
    /// @return RESULT_OK; RESULT_UNSUPPORTED_FORMAT for any other format, the planar ones included
    int Process(const char* buf, int size, SampleFmt fmt);

private:
    static constexpr float kDefaultGain = 0.8F;

    /// Applies the curve to `size` bytes.
    int ProcessCore2(short* samples, int size);
    int ProcessCore2(float* samples, int size);

    /// An alternative curve of three slopes; exported, not used by the library.
    int ProcessCore(short* samples, int size);
    int ProcessCore(float* samples, int size);

    bool mInited = false;
    float mGain = kDefaultGain;
    int mFmt = SAMPLE_FMT_NONE;  ///< SAMPLE_FMT_S16, SAMPLE_FMT_FLT or none
};
