#pragma once

#include <cstddef>
#include <memory>

#include "common/export.h"
#include "common/media_process.h"

namespace audio_filter::internal {
class Suppressor;
}

/// The noise suppressor of one channel, one suppressor block at a time: splits 320 samples into two
/// bands, suppresses the noise of both and merges them. 320 samples are 10 ms at 32000 Hz, the rate
/// for which the unit is designed; at 8000 Hz the suppressor uses the first 80 of a band's 160.
///
/// The latency is 96 samples of a band inside the suppressor (48 at 8000 Hz) and about four samples
/// in the band filters.
///
/// Float output has no high band, except for blocks of digital silence, where the suppressor exits
/// early and the high band passes, delayed. A float sample that is not finite counts as 0. Finite
/// samples that overflow the suppressor (noise from about 2e5 times full scale on) give a block of
/// silence in the low band and restart the suppressor, which would otherwise return only NaN.
///
/// Supports one thread at a time.
class AUDIO_FILTER_API NSWrap {
public:
    /// [setup] Not initialised.
    NSWrap();
    /// [setup]
    ~NSWrap();

    /// [setup] Restarts the suppressor. The band-filter memories are kept if the format is the same.
    /// Throws std::bad_alloc when memory runs out.
    /// @param sampleRate 8000, 16000 or 32000 Hz
    /// @param fmt SAMPLE_FMT_S16 or SAMPLE_FMT_FLT; planar formats are not supported
    /// @param level 0 mild .. 3 most aggressive
    /// @return false for other arguments, or when the suppressor's instance cannot be allocated. A
    ///         negative rate, no format or a level out of range changes nothing that an earlier Init
    ///         stored. An unsupported rate is stored, and an earlier stream of the same format keeps
    ///         running.
    bool Init(int sampleRate, SampleFmt fmt, int level);

    /// [audio] Processes 320 samples into 320 samples in the format of Init, at any address; `in` may
    /// be `out`.
    /// @return RESULT_OK; RESULT_FAILURE before a successful Init or for a null buffer: `out` is then
    ///         unchanged
    int Process(const char* in, char* out);

    /// [audio] Sets the suppression level, 0..3.
    /// @return false for any other level, or before Init
    bool setLevel(int level);

    /// [audio] Clears the band-filter memories; the suppressor's own state is unchanged.
    /// @return false if Init has not stored a supported format
    bool Reset();

    /// [setup] Releases everything. @return true
    bool Clear();

private:
    using Bytes = std::unique_ptr<char[]>;

    template <typename Sample, typename Memory>
    void AllocateMissing();
    template <typename Sample, typename Memory>
    int ProcessBlock(const char* in, char* out);
    void ReleaseBuffers();

    bool mInited = false;  ///< required by the interface; never set, never read
    int mSampleRate = 0;
    int mLevel = 0;
    int mFmt = SAMPLE_FMT_NONE;  ///< the SampleFmt given to Init
    Bytes mLowIn;                ///< bands, room for 320 samples each
    Bytes mHighIn;
    Bytes mLowOut;
    Bytes mHighOut;
    Bytes mAnalysisState1;  ///< band-filter memories, six values each
    Bytes mAnalysisState2;
    Bytes mSynthesisState1;
    Bytes mSynthesisState2;
    std::unique_ptr<audio_filter::internal::Suppressor> mNs;
    int mBufferFmt = SAMPLE_FMT_NONE;  ///< format of the buffers; none without buffers
};
