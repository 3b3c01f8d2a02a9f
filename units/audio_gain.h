#pragma once

#include "common/export.h"
#include "common/media_process.h"

/// Raises the loudness of PCM in place with a fixed, memoryless curve of two slopes: quiet samples
/// are multiplied up, loud ones compressed, and full scale stays (about) full scale. Nothing is
/// carried from one call to the next but the settings. Channels play no role: every sample is
/// mapped the same way, interleaved or planar.
///
///     AudioGain gain;
///     gain.Init(SAMPLE_FMT_S16);
///     gain.SetGain(0.5F);
///     gain.Process(bytes, size);
///
/// Result codes: 0 done, 2 bad argument, 3 unsupported format, 4 not initialised, 11 unsupported
/// kind of samples. One object serves one thread at a time.
class AUDIO_FILTER_API AudioGain {
public:
    /// [setup] Not initialised, with gain 0.8.
    AudioGain() = default;

    /// [setup] Takes samples of a format from now on and sets the gain to 0.8.
    /// @param fmt 16-bit (1, 6) or 32-bit float (3, 8)
    /// @return 0, or 3 for any other format: the unit is then not initialised
    int Init(SampleFmt fmt);

    /// [audio]
    bool IsInited();

    /// [setup] Back to not initialised, with gain 0: what runs without Init leaves the samples
    /// alone.
    /// @return true
    bool Clear();

    /// [audio] The strength of the curve. Needs no Init, and Init overrides it.
    /// @param g 0..1, where 0 leaves samples untouched; values beyond are taken as 0 or 1, NaN as 0
    /// @return true
    bool SetGain(float g);

    /// [audio] Maps a block in place, although it is declared const. At any gain but 0, float
    /// samples come out in -1..1, whatever they were (NaN as -1).
    /// @param size bytes, at least 1; the bytes of an incomplete last sample stay as they are
    /// @return 0; 2 for a null buffer or a size below 1; 4 when not initialised
    int Process(const char* buf, int size);

    /// [audio] The same with the kind of samples named by the call, initialised or not. Nothing is
    /// checked; a null buffer or a size without a whole sample maps nothing.
    /// @param size bytes, any number
    /// @param fmt SAMPLE_FMT_S16 or SAMPLE_FMT_FLT, also for planar samples
    /// @return 0, or 11 for any other kind, the planar ones included
    int Process(const char* buf, int size, SampleFmt fmt);

private:
    static constexpr float kDefaultGain = 0.8F;

    /// The curve, over `size` bytes.
    int ProcessCore2(short* samples, int size);
    int ProcessCore2(float* samples, int size);

    /// An alternative curve of three slopes, exported and called by nothing here.
    int ProcessCore(short* samples, int size);
    int ProcessCore(float* samples, int size);

    bool mInited = false;
    float mGain = kDefaultGain;
    int mFmt = -1;  ///< 1 for 16-bit samples, 3 for float, -1 for none
};
