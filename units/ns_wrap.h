#pragma once

#include <cstddef>
#include <memory>

#include "common/export.h"
#include "common/media_process.h"

namespace audio_filter::internal {
class Suppressor;
}

/// The noise suppressor for one channel, a frame at a time: splits 320 samples into two bands,
/// suppresses the noise of both and merges them again. 320 samples are 10 ms at 32000 Hz, for which
/// the unit is made; at 8000 Hz the suppressor works on the first 80 of the 160 samples of a band.
///
/// The output lags the input: by 96 samples of a band inside the suppressor (48 at 8000 Hz), and by
/// about four samples in the band filters.
///
/// Float samples come out without a high band: only in frames of digital silence, which the
/// suppressor leaves early, does it pass (delayed). A float sample that is not finite counts as 0.
/// Finite ones so large that the suppressor overflows (noise from about 2e5 times full scale on)
/// make a frame of silence in the low band and start the suppressor anew: it would return nothing
/// but NaN from then on.
///
/// One object serves one thread at a time.
class AUDIO_FILTER_API NSWrap {
public:
    /// [setup] Not initialised.
    NSWrap();
    /// [setup]
    ~NSWrap();

    /// [setup] Starts the suppressor anew. The memories of the band filters are kept if the format
    /// stays the same. Throws std::bad_alloc when memory runs out.
    /// @param sampleRate 8000, 16000 or 32000 Hz
    /// @param fmt SAMPLE_FMT_S16 or SAMPLE_FMT_FLT; planar formats are not translated
    /// @param level 0 mild .. 3 most aggressive
    /// @return false for anything else, and when there is no memory for the suppressor's own
    ///         instance: nothing is processed then. A negative rate, no format or a level out of
    ///         range changes nothing that an earlier Init has stored. Another rate is stored, and a
    ///         stream of the same format that ran before goes on as it was.
    bool Init(int sampleRate, SampleFmt fmt, int level);

    /// [audio] One frame: 320 samples in, 320 out, in the format of Init, at any address; `in` may
    /// be `out`.
    /// @return 0; -1 without a good Init or for a null buffer: `out` is then untouched
    int Process(const char* in, char* out);

    /// [audio] The suppression level, 0..3.
    /// @return false for any other level, or before Init
    bool setLevel(int level);

    /// [audio] Silences the memories of the band filters; the suppressor goes on as it is.
    /// @return false when Init has stored no format that is processed
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

    bool mInited = false;  ///< never set, never read
    int mSampleRate = 0;
    int mLevel = 0;
    int mFmt = SAMPLE_FMT_NONE;  ///< the SampleFmt given to Init
    Bytes mLowIn;                ///< band frames, 320 samples each
    Bytes mHighIn;
    Bytes mLowOut;
    Bytes mHighOut;
    Bytes mAnalysisState1;  ///< band-filter memories, six values each
    Bytes mAnalysisState2;
    Bytes mSynthesisState1;
    Bytes mSynthesisState2;
    std::unique_ptr<audio_filter::internal::Suppressor> mNs;
    int mBufferFmt = SAMPLE_FMT_NONE;  ///< what the buffers hold; none while there are none
};
