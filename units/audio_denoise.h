#pragma once

#include <cstddef>
#include <memory>

#include "common/export.h"
#include "common/media_process.h"
#include "units/ns_wrap.h"

/// Noise suppression for a mono or interleaved stereo stream, in blocks of any length. Samples are
/// collected into suppressor blocks of 10 ms; each channel has its own suppressor. Only complete
/// processed blocks are returned; remaining samples wait for the next call.
///
///     AudioDenoise denoise;
///     denoise.Init(32000, 1, SAMPLE_FMT_S16, 3);
///     int size = bytesIn;
///     denoise.Process(in, out, size);  // size is now the bytes in `out`, possibly 0
///
/// Designed for 32000 Hz. At 8000 and 16000 Hz each 320-sample suppressor block holds 80 or 160 new
/// samples followed by zeros, which leaves audible gaps in the output. Any other rate is accepted
/// and returns silence, or nothing below 100 Hz, where 10 ms contain no sample. Float samples lose
/// the band above 8 kHz; NSWrap documents the handling of extreme values.
///
/// Result codes: RESULT_OK, RESULT_BAD_ARGUMENT, RESULT_INVALID for an unsupported stream or a
/// misaligned size, RESULT_NOT_INITIALISED, RESULT_PASSED_THROUGH. Supports one thread at a time.
class AUDIO_FILTER_API AudioDenoise {
public:
    /// [setup] Not initialised.
    AudioDenoise();
    /// [setup]
    ~AudioDenoise();

    /// [setup] Starts a stream, discarding any earlier one. Throws std::bad_alloc when memory runs
    /// out: the unit is then not initialised. A channel whose suppressor rejects the settings (a
    /// planar format, an unsupported rate or level), or cannot allocate its instance, is not reported
    /// and returns silence.
    /// @param sampleRate Hz, at least 1; 32000 for correct operation
    /// @param channels at least 1; 1 and 2 are processed
    /// @param fmt 16-bit (1) or 32-bit float (3); the planar formats (6, 8) are accepted
    /// @param level 0 mild .. 3 most aggressive
    /// @return RESULT_OK; RESULT_INVALID for arguments out of range: the unit is then not initialised
    int Init(int sampleRate, int channels, SampleFmt fmt, int level);

    /// [audio]
    bool IsInited();

    /// [audio] Sets the suppression level of all channels, clamped to 0..3.
    /// @return true if both channels of a stereo unit accepted it; false for a mono unit, although it
    ///         applies the level
    bool Config(int level);

    /// [audio] Appends a block and returns the suppressor blocks that are now complete: none, or up to
    /// one sample less than 10 ms more than came in. With three or more channels, copies the block.
    /// The checks run in this order, first match wins:
    /// RESULT_BAD_ARGUMENT for a null buffer or a size below 1; RESULT_PASSED_THROUGH for three or
    /// more channels, initialised or not; RESULT_NOT_INITIALISED before any accepted Init;
    /// RESULT_INVALID for a size that is no multiple of the channels; RESULT_NOT_INITIALISED after
    /// Clear or a refused Init; RESULT_BAD_ARGUMENT if `size` could not count the output; RESULT_OK.
    /// @param in `size` bytes of interleaved samples at any address. An incomplete last frame is
    ///        ignored. Float samples that are not finite count as 0.
    /// @param out room for `size` bytes and 10 ms of every channel; must not overlap `in`
    /// @param size bytes, at least 1, a multiple of the channels, and together with the waiting
    ///        samples at most 2^31 - 1; on return (RESULT_OK) the bytes written
    int Process(const char* in, char* out, int& size);

    /// [audio] Discards the waiting samples and clears the band filters; the noise estimate remains.
    /// @return true
    bool Reset();

    /// [setup] Releases everything. @return true
    bool Clear();

private:
    using Buffer = std::unique_ptr<char[]>;

    /// Appends `frames` stereo frames to the input blocks, as far as they fit.
    int SplitLR(char* in, int frames);
    /// Interleaves the first `frames` samples of the processed blocks.
    int CombineLR(char* out, int frames);

    void StartChannel(Buffer& in, Buffer& out, std::unique_ptr<NSWrap>& ns, int level);
    void Gather(const char* in, int frames);
    void ProcessBlock(char* out);
    std::size_t Bytes(int samples) const;

    bool mInited = false;
    int mSampleRate = 0;
    int mBytesPerSample = 0;
    int mChannels = 0;
    int mBuffered = 0;  ///< frames waiting in the input blocks
    int mFrameLen = 0;  ///< frames in 10 ms
    Buffer mInL;        ///< input block
    Buffer mInR;        ///< for stereo only, like all R
    Buffer mOutL;       ///< processed block
    Buffer mOutR;
    std::unique_ptr<NSWrap> mNsL;
    std::unique_ptr<NSWrap> mNsR;
    int mFmt = SAMPLE_FMT_NONE;  ///< the SampleFmt given to Init
};
