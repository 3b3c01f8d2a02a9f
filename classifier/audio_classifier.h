#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "classifier/complex.h"
#include "common/export.h"
#include "common/media_process.h"
#include "units/audio_denoise.h"

namespace audio_filter::internal {
class SpectrumTransform;
}

/// The parameters of the analysis at a sample rate. "Frame" in these exported names is an analysis
/// segment: one of the overlapping pieces of about 32 ms that are windowed.
struct AUDIO_FILTER_API algoParam {
    float emphasis;              ///< pre-emphasis coefficient
    unsigned short sampleRate;   ///< Hz
    unsigned short frameLength;  ///< samples of a segment, about 32 ms
    unsigned int hop;            ///< samples from one segment to the next
    /// For each threshold, the centres of the share of low-energy segments, 0..1; speech first.
    float lowEnergyCentres[4][4];
    float lowEnergyThresholds[4];  ///< of a low-energy segment, as a factor of the mean energy
    float subBandCentres[4][3];    ///< of the shares of power in three sub-bands; speech first
    unsigned int bandStart;        ///< first transform bin of the sub-bands
    unsigned int fftSize;          ///< samples that are transformed
};

/// The music detector: decides about once a second whether a stream is music or speech, from the
/// share of low-energy segments and from the distribution of power in the upper half of the band.
///
///     AudioClassifier classifier;
///     classifier.Init(1, 32000, SAMPLE_FMT_S16);
///     bool music = classifier.MusicCheck(block, bytes);
///
/// The input is a mono stream or the left channel of a stereo one, passed through a private noise
/// suppressor at 32000 Hz and level 3, for streams of any rate. With more than two channels
/// the suppressor does not run, and its last output is analysed again.
///
/// Each call appends as many samples of the suppressor's latest output as came in, until the history
/// holds 60 hops and a segment (31744 samples at 32000 Hz). The next call analyses the history and
/// discards its own block. MusicCheck returns the latest verdict; from the 31st analysis on, a
/// weighted vote of the last 30 verdicts and the latest.
///
/// 44100 and 48000 Hz have separate parameters; every other rate uses those of 32000 Hz. Two
/// deliberate oddities: float samples are stored truncated to 16 bits and analysed as floats, and
/// blocks are truncated to the four seconds that the buffers hold. At most N = 2 * rate - 2 samples are
/// transformed.
///
/// Supports one thread at a time.
class AUDIO_FILTER_API AudioClassifier {
public:
    /// [setup] Not initialised.
    AudioClassifier();
    /// [setup]
    ~AudioClassifier();
    AudioClassifier(const AudioClassifier&) = delete;
    AudioClassifier& operator=(const AudioClassifier&) = delete;

    /// [setup] Configures the stream. The gathered samples and the votes are kept. Allocates everything
    /// that the stream needs, and frees each buffer of an earlier Init before it allocates the new
    /// one: four seconds of mono samples twice, or seven times for two channels, and up to 1.2 MiB
    /// for the analysis. The twiddle factors of the transform (1 MiB at 44100 and 48000 Hz, else
    /// 0.5 MiB) are shared by all objects, built without a lock by the first Init that needs them,
    /// and kept until the process ends.
    /// Throws std::bad_alloc when memory runs out, or when four seconds exceed 2^31 - 1 bytes: the
    /// detector is then not initialised.
    /// @param channels 1 or 2 to be analysed
    /// @param sampleRate Hz; below 1, nothing is gathered
    /// @param format 16-bit (1) or 32-bit float (3); the planar formats (6, 8) are accepted and
    ///        analysed as silence
    /// @return RESULT_OK; RESULT_INVALID for any other format: the detector is then not initialised
    int Init(unsigned short channels, int sampleRate, SampleFmt format);

    /// [audio]
    bool IsInited();

    /// [audio] Processes a block. About once a second a call runs the analysis and takes longer; no
    /// call allocates.
    /// @param data `length` bytes of interleaved samples at any address. Null with a length above 0
    ///        does nothing.
    /// @param length bytes; an incomplete last frame is ignored. A call without a whole frame,
    ///        length 0 included, appends nothing, and analyses if the history is full.
    /// @return the current verdict, true for music; false when not initialised
    bool MusicCheck(unsigned char* data, unsigned int length);

    /// [audio] The verdict of the latest analysis alone, without the vote.
    bool GetRealTimeCheckRet();

private:
    // Exported steps of the analysis. audio_classifier_uncalled.cpp holds those that MusicCheck does
    // not use. Returned arrays belong to the caller: delete[] them.

    /// Bytes per sample; 4 for an unknown format, where the format table has 0: deliberate.
    unsigned short getSampleByte(SampleFmt format);
    algoParam getAlgoParam(unsigned short sampleRate);
    /// Deinterleaves stereo samples; does nothing for formats other than 16-bit and float.
    void splitLR(char* in, unsigned char* left, unsigned char* right, int samplesPerChannel,
                 SampleFmt format);
    /// In the format of Init; zeros for a format other than 16-bit and float.
    float* emphasis(unsigned char* in, unsigned short count, float coefficient);
    float* hammingWindow(unsigned short length, float gain);
    void hadmanMulti(float* data, float* window, unsigned int length);
    /// The windowed segments, mFrameCount of them; free them with array2dDelete.
    float** frameSeg(float* signal, unsigned short signalLength, unsigned short frameLength,
                     unsigned short hop);
    /// size / 2 + 1 magnitudes.
    float* fft(float* signal, unsigned int count, unsigned int size);
    /// @param magnitudes as many as the sample rate in the parameters
    float* subBandEnergyRate(float* magnitudes);
    float distance(float* a, float* b, unsigned int n);
    /// Rows of zeros; null where memory runs out.
    void** array2dCreate(unsigned int rows, unsigned int columns, unsigned long long elementSize);
    void array2dDelete(void** rows, unsigned int rowCount);
    float lowEnergyFrameRate(float** frames, unsigned short frameLength, unsigned int frameCount,
                             float ratio);
    bool musicCheckByLowEnergyFrameRate(float** frames, unsigned short frameLength,
                                        unsigned int frameCount, float* const thresholds,
                                        float (*const centres)[4]);
    bool musicCheckByFft(float* signal, unsigned int count, unsigned int fftSize, float** centres);
    float* nearestCenter(float* point, float** centres, unsigned short centreCount,
                         unsigned short dimension);
    bool preRetRefer(bool current, unsigned short historyLength);

    using Bytes = std::vector<unsigned char>;

    std::size_t Capacity() const;
    void SuppressNoise(unsigned char* data, int frames);
    void Gather(std::size_t samples);
    void PrepareAnalysis();
    bool Analyse(algoParam param);
    std::span<float> EmphasisedHistory(float coefficient);
    void CacheWindow(unsigned short length);

    std::vector<float> mWindow;      ///< Hamming window of the latest segment length
    unsigned short mFrameCount = 0;  ///< segments of the latest segmentation
    Bytes mVotes;                    ///< past verdicts, 0 or 1, oldest first
    unsigned short mVoteCount = 0;   ///< verdicts since the length of the vote changed
    bool mRawResult = false;         ///< latest verdict
    AudioDenoise mDenoise;
    bool mInited = false;
    Bytes mDenoised;  ///< latest output of the suppressor
    Bytes mLeft;      ///< allocated for two channels only
    Bytes mRight;     ///< as mLeft; the interface demands it, splitLR writes it, nothing reads it
    Bytes mHistory;   ///< gathered samples
    bool mSmoothedResult = false;  ///< latest result of MusicCheck
    unsigned int mGathered = 0;    ///< samples
    unsigned short mChannels = 0;
    unsigned short mBytesPerSample = 0;
    std::int32_t mSampleRate = 0;
    SampleFmt mFormat = SAMPLE_FMT_U8;

    // Scratch of the analysis, at its largest size.
    std::vector<float> mSignal;      ///< the history after pre-emphasis
    std::vector<double> mEnergies;   ///< of the segments
    std::vector<float> mMagnitudes;  ///< of the sub-bands' bins
    std::unique_ptr<audio_filter::internal::SpectrumTransform> mTransform;
};
