#pragma once

#include <cstddef>
#include <memory>

#include "common/export.h"
#include "common/media_process.h"
#include "units/ns_wrap.h"

/// Suppresses the noise of a mono or interleaved stereo stream in blocks of any length. Samples are
/// gathered into frames of 10 ms per channel, each channel has a suppressor of its own, and whole
/// processed frames come back; what does not fill a frame waits for the next call.
///
///     AudioDenoise denoise;
///     denoise.Init(32000, 1, SAMPLE_FMT_S16, 3);
///     int size = bytesIn;
///     denoise.Process(in, out, size);  // size is now the bytes that `out` holds, 0 included
///
/// Made for 32000 Hz. At 8000 and 16000 Hz each 320-sample frame of the suppressor holds 80 or 160
/// fresh samples followed by zeros, and the gaps are heard in the output; any other rate is
/// accepted and comes out as silence, or below 100 Hz, where 10 ms hold no sample, not at all.
/// Float samples lose what lies above 8 kHz, and NSWrap says what becomes of those that are out of
/// any range.
///
/// Result codes: 0 done, 2 bad argument, 3 unsupported or misaligned, 4 not initialised, 12 passed
/// through unprocessed. One object serves one thread at a time.
class AUDIO_FILTER_API AudioDenoise {
public:
    /// [setup] Not initialised.
    AudioDenoise();
    /// [setup]
    ~AudioDenoise();

    /// [setup] Starts a stream, whatever ran before. Throws std::bad_alloc when memory runs out:
    /// the unit is then not initialised. A channel whose suppressor refuses the settings (a planar
    /// format, a rate or level that it does not take), or finds no memory for its own instance,
    /// goes unnoticed and comes out as silence.
    /// @param sampleRate 1 Hz or more; 32000 to work as it should
    /// @param channels 1 or more; 1 and 2 are processed
    /// @param fmt 16-bit (1) or 32-bit float (3); the planar ones (6, 8) are accepted
    /// @param level 0 mild .. 3 most aggressive
    /// @return 0, or 3 for arguments out of range: the unit is then not initialised
    int Init(int sampleRate, int channels, SampleFmt fmt, int level);

    /// [audio]
    bool IsInited();

    /// [audio] The suppression level of all channels; values beyond 0..3 are taken as 0 or 3.
    /// @return true when both channels of a stereo unit took it; false for a mono unit, which takes
    ///         it all the same
    bool Config(int level);

    /// [audio] Adds a block and returns the frames that are now complete: none, or up to one sample
    /// short of a frame more than the block. From three channels on, the block is copied.
    /// @param in size bytes of interleaved samples at any address. Bytes that do not make a whole
    ///        sample of every channel are ignored. Float samples that are not finite count as 0.
    /// @param out room for size bytes and one frame of every channel; must not overlap `in`
    /// @param size bytes, at least 1 and a multiple of the channels, and with what waits no more
    ///        than an int can count; on return (0) bytes written
    /// @return 0, 2, 3, 4 or 12
    int Process(const char* in, char* out, int& size);

    /// [audio] Drops the samples that wait, and silences the band filters; the noise estimate
    /// stays.
    /// @return true
    bool Reset();

    /// [setup] Releases everything. @return true
    bool Clear();

private:
    using Buffer = std::unique_ptr<char[]>;

    /// Appends `frames` stereo frames to the input frame buffers; what they cannot hold is dropped.
    int SplitLR(char* in, int frames);
    /// Interleaves the first `frames` samples of the processed frames.
    int CombineLR(char* out, int frames);

    void StartChannel(Buffer& in, Buffer& out, std::unique_ptr<NSWrap>& ns, int level);
    void Gather(const char* in, int samples);
    void ProcessBlock(char* out);
    std::size_t Bytes(int samples) const;

    bool mInited = false;
    int mSampleRate = 0;
    int mBytesPerSample = 0;
    int mChannels = 0;
    int mBuffered = 0;  ///< samples per channel that wait in the input frame buffers
    int mFrameLen = 0;  ///< samples per channel of 10 ms
    Buffer mInL;        ///< input frame
    Buffer mInR;        ///< only for stereo, as all R
    Buffer mOutL;       ///< processed frame
    Buffer mOutR;
    std::unique_ptr<NSWrap> mNsL;
    std::unique_ptr<NSWrap> mNsR;
    int mFmt = SAMPLE_FMT_NONE;  ///< the SampleFmt given to Init
};
