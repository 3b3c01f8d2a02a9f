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

/// What the classifier works with at a sample rate.
struct AUDIO_FILTER_API algoParam {
    float emphasis;              ///< coefficient of the pre-emphasis
    unsigned short sampleRate;   ///< Hz
    unsigned short frameLength;  ///< samples, about 32 ms
    unsigned int hop;            ///< samples from one frame to the next
    float lowEnergyCentres[4][4];
    float lowEnergyThresholds[4];
    float subBandCentres[4][3];
    unsigned int bandStart;  ///< bin of the transform where the sub-bands begin
    unsigned int fftSize;    ///< samples that are transformed
};

/// Tells music from speech, about once a second, by how often the sound falls quiet and by how the
/// power above half the band is spread.
///
///     AudioClassifier classifier;
///     classifier.Init(1, 32000, SAMPLE_FMT_S16);
///     bool music = classifier.MusicCheck(block, bytes);
///
/// It listens to a mono stream or to the left channel of a stereo one, through a noise suppressor
/// of its own that always runs at 32000 Hz and level 3; of more channels, it hears nothing new.
/// Each call adds as many samples of what the suppressor gave out last as came in, 60 hops and a
/// frame in all (31744 samples at 32000 Hz); the call after that analyses them, and its own block
/// is lost. The answer is the latest verdict, from the 31st on a vote of the last 30 and the
/// latest.
///
/// The centres are known for 32000, 44100 and 48000 Hz; any other rate is taken for 32000. Float
/// samples are gathered as truncated 16-bit numbers and analysed as floats, on purpose. A block is
/// cut to what the buffers for four seconds can hold, and no more than N = 2 * rate - 2 samples are
/// transformed.
///
/// One object serves one thread at a time.
class AUDIO_FILTER_API AudioClassifier {
public:
    /// [setup] Not initialised.
    AudioClassifier();
    /// [setup]
    ~AudioClassifier();
    AudioClassifier(const AudioClassifier&) = delete;
    AudioClassifier& operator=(const AudioClassifier&) = delete;

    /// [setup] Takes a stream from now on. What has been gathered and voted is kept. All memory
    /// that the stream takes is made here: four seconds of mono samples twice, for two channels
    /// seven times, and up to 1.2 MiB for the analysis. The rotations of the transform (1 MiB, half
    /// of that at 32000 Hz) are shared by all objects. Throws std::bad_alloc when memory runs out,
    /// or for four seconds of more than 2^31 - 1 bytes: the classifier is then not initialised.
    /// @param channels 1 and 2 are listened to
    /// @param sampleRate Hz; nothing can be gathered for less than 1
    /// @param format 16-bit (1) or 32-bit float (3); the planar ones (6, 8) are accepted, and heard
    ///        as silence
    /// @return 0, or 3 for any other format: the classifier is then not initialised
    int Init(unsigned short channels, int sampleRate, SampleFmt format);

    /// [audio]
    bool IsInited();

    /// [audio] Hears a block. The call that analyses, about one a second, takes longer than the
    /// others, but allocates nothing either.
    /// @param data length bytes of interleaved samples at any address
    /// @param length bytes; what does not make a sample of every channel is ignored
    /// @return whether music plays; false when not initialised
    bool MusicCheck(unsigned char* data, unsigned int length);

    /// [audio] The latest verdict by itself, without the vote.
    bool GetRealTimeCheckRet();

private:
    // The steps of the analysis, one by one. Arrays that they return are the caller's: delete[]
    // them.

    /// Bytes of a sample; 4 for whatever is not known. Not the sizes of the format table, on
    /// purpose.
    unsigned short getSampleByte(SampleFmt format);
    algoParam getAlgoParam(unsigned short sampleRate);
    /// Takes stereo samples apart; other formats than 16-bit and float are left alone.
    void splitLR(char* in, unsigned char* left, unsigned char* right, int samplesPerChannel,
                 SampleFmt format);
    /// In the format of Init; zeros for a format other than 16-bit and float.
    float* emphasis(unsigned char* in, unsigned short count, float coefficient);
    float* hammingWindow(unsigned short length, float gain);
    void hadmanMulti(float* data, float* window, unsigned int length);
    /// Windowed frames, mFrameCount of them; array2dDelete them.
    float** frameSeg(float* signal, unsigned short signalLength, unsigned short frameLength,
                     unsigned short hop);
    /// size / 2 + 1 magnitudes.
    float* fft(float* signal, unsigned int count, unsigned int size);
    /// @param magnitudes as many as the sample rate of the parameters
    float* subBandEnergyRate(float* magnitudes);
    float distance(float* a, float* b, unsigned int n);
    /// Rows of zeros; one for which memory runs out is null.
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

    std::size_t Room() const;
    void Hear(unsigned char* data, int samples);
    void Gather(std::size_t samples);
    void PrepareAnalysis();
    bool Analyse(algoParam param);
    std::span<float> EmphasisedHistory(float coefficient);
    void CacheWindow(unsigned short length);

    std::vector<float> mWindow;      ///< Hamming, of the frame length used last
    unsigned short mFrameCount = 0;  ///< of the last segmentation
    Bytes mVotes;                    ///< past raw verdicts, 0 or 1, oldest first
    unsigned short mVoteCount = 0;   ///< verdicts since the vote's length changed
    bool mRawResult = false;         ///< last verdict
    AudioDenoise mDenoise;
    bool mInited = false;
    Bytes mDenoised;  ///< what the suppressor gave out last
    Bytes mLeft;      ///< only for two channels, as mRight
    Bytes mRight;
    Bytes mHistory;                ///< gathered samples
    bool mSmoothedResult = false;  ///< last answer of MusicCheck
    unsigned int mGathered = 0;    ///< samples
    unsigned short mChannels = 0;
    unsigned short mBytesPerSample = 0;
    std::int32_t mSampleRate = 0;
    SampleFmt mFormat = SAMPLE_FMT_NONE;

    // What an analysis writes to, as large as it can take.
    std::vector<float> mSignal;      ///< the history, emphasised
    std::vector<double> mEnergies;   ///< of the frames
    std::vector<float> mMagnitudes;  ///< of the bins of the sub-bands
    std::unique_ptr<audio_filter::internal::SpectrumTransform> mTransform;
};
