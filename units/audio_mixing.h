#pragma once

#include <cstddef>

#include "common/export.h"
#include "common/media_process.h"

/// Mixes several PCM sources of equal length: sums their samples position by position, then applies a
/// soft limiter that never reaches full scale.
///
/// The sources are equal source blocks, one after another in one buffer. All share one layout, which
/// does not matter otherwise: an interleaved stereo source is simply twice as long.
///
///     AudioMixing mixing;
///     mixing.Init(SAMPLE_FMT_S16);
///     int size = bytesOfBoth;
///     mixing.Process(in, out, size, 2);  // size is now the bytes of the mix
///
/// Result codes: RESULT_OK, RESULT_FAILURE for an unsupported format at Init, RESULT_BAD_ARGUMENT,
/// RESULT_INVALID for a length that is not divisible by the number of sources,
/// RESULT_NOT_INITIALISED, RESULT_PASSED_THROUGH for an unsupported format. On every code but
/// RESULT_OK the output is unchanged. An object is about 60 KiB, most of it scratch. Supports one
/// thread at a time.
class AUDIO_FILTER_API AudioMixing {
public:
    /// [setup] Not initialised.
    AudioMixing() = default;

    /// [setup] Sets the sample format.
    /// @param fmt 16-bit (1, 6) or 32-bit float (3, 8)
    /// @return RESULT_OK; RESULT_FAILURE for any other format: the unit is then not initialised
    int Init(SampleFmt fmt);

    /// [audio]
    bool IsInited();

    /// [setup] Back to not initialised.
    /// @return true
    bool Clear();

    /// [audio] Mixes all sources into one block. A single source is copied unchanged with all its
    /// bytes; of several sources, one that sounds alone is attenuated to 7/8. Float samples pass
    /// through 16 bits: beyond -1..1 they wrap around, and values that are not finite count as 0.
    /// @param in srcNum source blocks, at any address
    /// @param out room for one block; may be `in`, but must not overlap it otherwise
    /// @param size bytes of all sources, at least 1; on return, the bytes of the mix (RESULT_OK) or
    ///        those of all whole samples (RESULT_INVALID)
    /// @param srcNum 1..16
    /// @return RESULT_OK, RESULT_BAD_ARGUMENT, RESULT_INVALID, RESULT_NOT_INITIALISED or
    ///         RESULT_PASSED_THROUGH
    int Process(const char* in, char* out, int& size, int srcNum);

private:
    static constexpr int kMaxSources = 16;
    static constexpr std::size_t kScratchSamples = 1920;

    /// Mixes, attenuating even a single source to 7/8. count is in samples: of all sources on entry,
    /// of the mix on return.
    int DoProcess(short* in, short* out, int& count, int srcNum);
    int DoProcess(float* in, float* out, int& count, int srcNum);

    template <typename Sample>
    int ProcessAs(const char* in, char* out, int& size, int srcNum);
    template <typename Sample>
    int Mix(Sample* in, Sample* out, int& count, int srcNum);

    bool mInited = false;
    int mFmt = SAMPLE_FMT_NONE;                         ///< the SampleFmt given to Init
    short mScratch[kMaxSources][kScratchSamples] = {};  ///< one row per source
};
