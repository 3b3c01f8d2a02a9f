#pragma once

#include <cstddef>

#include "common/export.h"
#include "common/media_process.h"

/// Mixes several PCM sources of equal length into one: their samples are summed position by
/// position and the sum goes through a soft limiter that never reaches full scale.
///
/// The sources lie one after another in one buffer, N equal blocks. Channels play no role: an
/// interleaved stereo source is simply twice as long, and all sources share one layout.
///
///     AudioMixing mixing;
///     mixing.Init(SAMPLE_FMT_S16);
///     int size = bytesOfBoth;
///     mixing.Process(in, out, size, 2);  // size is now the bytes of one
///
/// Result codes: 0 done, -1 bad format at Init, 2 bad argument, 3 length not divisible by the
/// number of sources, 4 not initialised, 12 unsupported format. On any other code than 0 the output
/// is untouched. One object, some 60 kB of it scratch, serves one thread at a time.
class AUDIO_FILTER_API AudioMixing {
public:
    /// [setup] Not initialised.
    AudioMixing() = default;

    /// [setup] Takes samples of a format from now on.
    /// @param fmt 16-bit (1, 6) or 32-bit float (3, 8)
    /// @return 0, or -1 for any other format: the unit is then not initialised
    int Init(SampleFmt fmt);

    /// [audio]
    bool IsInited();

    /// [setup] Back to not initialised.
    /// @return true
    bool Clear();

    /// [audio] Mixes all sources into one block. One source alone is copied as it is, all its
    /// bytes; among several, even a source that is alone in sounding comes out at 7/8 of its level.
    /// Float samples go through 16 bits: beyond -1..1 they wrap, and what is not finite counts as
    /// 0.
    /// @param in srcNum blocks one after another, at any address
    /// @param out room for one block; may be `in`, but not overlap it otherwise
    /// @param size bytes of all sources, at least 1; on return bytes of one source on 0, and the
    ///        bytes of all whole samples on 3
    /// @param srcNum 1..16
    /// @return 0, 2, 3, 4 or 12
    int Process(const char* in, char* out, int& size, int srcNum);

private:
    static constexpr int kMaxSources = 16;
    static constexpr std::size_t kScratchSamples = 1920;

    /// The mix. A single source comes out at 7/8 here, too. count is in samples: of all sources on
    /// entry, of one on return.
    int DoProcess(short* in, short* out, int& count, int srcNum);
    int DoProcess(float* in, float* out, int& count, int srcNum);

    template <typename Sample>
    int ProcessAs(const char* in, char* out, int& size, int srcNum);
    template <typename Sample>
    int Mix(Sample* in, Sample* out, int& count, int srcNum);

    bool mInited = false;
    int mFmt = SAMPLE_FMT_NONE;                         ///< the SampleFmt given to Init
    short mScratch[kMaxSources][kScratchSamples] = {};  ///< a row per source: its current block
};
