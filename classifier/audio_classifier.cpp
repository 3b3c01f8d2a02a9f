#include "classifier/audio_classifier.h"

#include <algorithm>
#include <array>
#include <limits>
#include <new>

#include "classifier/features.h"
#include "classifier/segmentation.h"
#include "classifier/spectrum.h"
#include "classifier/vote.h"
#include "common/interleave.h"
#include "common/pcm_view.h"
#include "common/result_code.h"
#include "common/sample_format.h"
#include "units/suppressor_block.h"

using namespace audio_filter::internal;

namespace {

constexpr int kSuppressorRate = 32000;
constexpr int kSuppressorLevel = 3;
constexpr unsigned int kHopsGathered = 60;
constexpr unsigned short kVotes = 30;

// The analysis counts samples and segments in 16 bits.
constexpr std::size_t kSamplesCounted = 65535;
constexpr std::size_t kSegmentsCounted = 65535;

/// A float truncated to an integer and wrapped to 16 bits; 0 if it does not fit 32 bits.
std::int16_t Truncated(float sample) {
    constexpr float kLimit = 2147483648.0F;
    const bool fits = sample >= -kLimit && sample < kLimit;
    return static_cast<std::int16_t>(fits ? static_cast<std::int32_t>(sample) : 0);
}

/// Frees the old elements before it allocates the new ones.
template <typename Value>
void Reallocate(std::vector<Value>& values, std::size_t size) {
    values = std::vector<Value>();
    values.resize(size);
}

}  // namespace

AudioClassifier::AudioClassifier() = default;
AudioClassifier::~AudioClassifier() = default;

int AudioClassifier::Init(unsigned short channels, int sampleRate, SampleFmt format) {
    mInited = false;
    const int refused = mDenoise.Init(kSuppressorRate, 1, format, kSuppressorLevel);
    if (refused != RESULT_OK) {
        return refused;
    }
    mBytesPerSample = getSampleByte(format);
    mSampleRate = sampleRate;
    mChannels = channels;
    mFormat = format;

    const std::int64_t history = std::int64_t{mBytesPerSample} * std::max(sampleRate, 0) * 4;
    // More than two channels are not analysed. Without channels, the history is still allocated.
    const std::int64_t analysedChannels = std::min<std::int64_t>(channels, 2);
    const std::int64_t largest = std::max(history, history * analysedChannels);
    if (largest > std::numeric_limits<std::int32_t>::max()) {
        throw std::bad_alloc();
    }
    const auto historyBytes = static_cast<std::size_t>(history);
    const auto blockBytes = static_cast<std::size_t>(history * analysedChannels);
    const std::size_t splitBytes = channels == 2 ? blockBytes : 0;
    // The suppressor may return up to one of its blocks more than it receives.
    Reallocate(mDenoised, blockBytes + kBlockSamples * mBytesPerSample);
    Reallocate(mHistory, historyBytes);
    Reallocate(mLeft, splitBytes);
    Reallocate(mRight, splitBytes);
    mGathered = std::min(mGathered, static_cast<unsigned int>(historyBytes / mBytesPerSample));
    PrepareAnalysis();
    mInited = true;
    return RESULT_OK;
}

/// Allocates what an analysis needs, if the history can fill up for one.
void AudioClassifier::PrepareAnalysis() {
    const algoParam param = getAlgoParam(static_cast<unsigned short>(mSampleRate));
    if (Capacity() < kHopsGathered * param.hop + param.frameLength) {
        return;
    }
    mVotes.reserve(kVotes);
    CacheWindow(param.frameLength);
    Reallocate(mSignal, std::min(Capacity(), kSamplesCounted));
    Reallocate(mEnergies,
               std::min((Capacity() - param.frameLength) / param.hop + 1, kSegmentsCounted));
    Reallocate(mMagnitudes, param.bandStart);
    if (mTransform == nullptr || mTransform->Size() != param.fftSize) {
        mTransform.reset();
        mTransform = std::make_unique<SpectrumTransform>(param.fftSize);
    }
}

bool AudioClassifier::IsInited() {
    return mInited;
}

bool AudioClassifier::GetRealTimeCheckRet() {
    return mRawResult;
}

bool AudioClassifier::MusicCheck(unsigned char* data, unsigned int length) {
    if (!mInited) {
        return false;
    }
    if ((data == nullptr && length > 0) || mChannels == 0) {
        return mSmoothedResult;
    }
    const algoParam param = getAlgoParam(static_cast<unsigned short>(mSampleRate));
    const std::size_t samples = std::min<std::size_t>(
        length / mChannels / mBytesPerSample, mDenoised.size() / mBytesPerSample - kBlockSamples);
    SuppressNoise(data, static_cast<int>(samples));
    if (mGathered < kHopsGathered * param.hop + param.frameLength) {
        Gather(samples);
        return mSmoothedResult;
    }
    mRawResult = Analyse(param);
    mSmoothedResult = preRetRefer(mRawResult, kVotes);
    mGathered = 0;
    return mSmoothedResult;
}

/// The samples that the history can hold.
std::size_t AudioClassifier::Capacity() const {
    return mHistory.size() / mBytesPerSample;
}

/// With more than two channels, the previous block stays in place.
void AudioClassifier::SuppressNoise(unsigned char* data, int frames) {
    char* in = reinterpret_cast<char*>(data);
    if (mChannels == 2) {
        splitLR(in, mLeft.data(), mRight.data(), frames, mFormat);
        in = reinterpret_cast<char*>(mLeft.data());
    }
    if (mChannels <= 2) {
        int size = frames * mBytesPerSample;
        mDenoise.Process(in, reinterpret_cast<char*>(mDenoised.data()), size);
    }
}

/// Appends as many samples as came in, however many the suppressor returned.
void AudioClassifier::Gather(std::size_t samples) {
    const std::size_t width = mBytesPerSample;
    const std::size_t count = std::min(samples, Capacity() - mGathered);
    if (IsS16(mFormat)) {
        // Not memcpy: without a rate the history is empty and its address null.
        std::copy_n(mDenoised.data(), count * width, mHistory.data() + mGathered * width);
    } else if (IsFloat(mFormat)) {
        // Stored as 16-bit numbers but analysed as floats: callers rely on that mismatch.
        const PcmView<const float> in(mDenoised.data(), count);
        PcmView<std::int16_t> out(mHistory.data(), mGathered + count);
        for (std::size_t i = 0; i < count; ++i) {
            out.Set(mGathered + i, Truncated(in.Get(i)));
        }
    }
    mGathered += static_cast<unsigned int>(count);
}

bool AudioClassifier::Analyse(algoParam param) {
    const std::span<float> signal = EmphasisedHistory(param.emphasis);
    CacheWindow(param.frameLength);
    mFrameCount = CountSegments(mGathered, param.frameLength, param.hop);
    mEnergies.resize(mFrameCount);
    SegmentEnergies(signal, param.hop, mWindow, mEnergies);
    if (IsSpeechByLowEnergy(mEnergies, param.lowEnergyThresholds, param.lowEnergyCentres)) {
        return false;
    }
    float* centres[] = {param.subBandCentres[0], param.subBandCentres[1], param.subBandCentres[2],
                        param.subBandCentres[3]};
    return musicCheckByFft(signal.data(), static_cast<unsigned int>(signal.size()), param.fftSize,
                           centres);
}

/// The gathered samples, their number taken modulo 65536. The rest of the history counts as zeros.
std::span<float> AudioClassifier::EmphasisedHistory(float coefficient) {
    const std::size_t counted = static_cast<unsigned short>(mGathered);
    const std::span<float> emphasised = std::span(mSignal).first(counted);
    if (IsS16(mFormat)) {
        Emphasise(PcmView<const std::int16_t>(mHistory.data(), counted), coefficient, emphasised);
    } else if (IsFloat(mFormat)) {
        Emphasise(PcmView<const float>(mHistory.data(), counted), coefficient, emphasised);
    } else {
        std::fill(emphasised.begin(), emphasised.end(), 0.0F);
    }
    return emphasised;
}

void AudioClassifier::CacheWindow(unsigned short length) {
    if (mWindow.size() != length) {
        Reallocate(mWindow, length);
        HammingWindow(mWindow, 1.0F);
    }
}

unsigned short AudioClassifier::getSampleByte(SampleFmt format) {
    const int bytes = SampleByteSize(format);
    return static_cast<unsigned short>(bytes == 0 ? 4 : bytes);
}

void AudioClassifier::splitLR(char* in, unsigned char* left, unsigned char* right,
                              int samplesPerChannel, SampleFmt format) {
    const auto frames = static_cast<std::size_t>(std::max(samplesPerChannel, 0));
    if (IsS16(format)) {
        Deinterleave<std::int16_t>(in, frames, left, right);
    } else if (IsFloat(format)) {
        Deinterleave<float>(in, frames, left, right);
    }
}

bool AudioClassifier::musicCheckByFft(float* signal, unsigned int count, unsigned int fftSize,
                                      float** centres) {
    constexpr unsigned short kCentres = 4;
    const std::size_t start = getAlgoParam(static_cast<unsigned short>(mSampleRate)).bandStart;
    // The analysis uses the transform that Init has built; other sizes build one here.
    const bool prepared = mTransform != nullptr && mTransform->Size() == fftSize;
    std::unique_ptr<SpectrumTransform> other;
    if (!prepared) {
        other = std::make_unique<SpectrumTransform>(fftSize);
    }
    mMagnitudes.resize(start);
    const std::size_t bins = std::size_t{fftSize} / 2 + 1;
    const std::span<float> band =
        std::span(mMagnitudes).first(std::min(std::max(bins, start) - start, start));
    (prepared ? *mTransform : *other).Run({signal, count}, start, band);
    std::array<float, 3> ratios = UpperBandRatios(band, start);
    const float* nearest = nearestCenter(ratios.data(), centres, kCentres, ratios.size());
    return !std::equal(nearest, nearest + ratios.size(), centres[0]);
}

float* AudioClassifier::nearestCenter(float* point, float** centres, unsigned short centreCount,
                                      unsigned short dimension) {
    std::size_t nearest = 0;
    float least = 0.0F;
    for (std::size_t k = 0; k < centreCount; ++k) {
        const float candidate = Distance({point, dimension}, {centres[k], dimension});
        if (k == 0 || least >= candidate) {
            nearest = k;
            least = candidate;
        }
    }
    return centres[nearest];
}

bool AudioClassifier::preRetRefer(bool current, unsigned short historyLength) {
    constexpr unsigned short kCountLimit = 60000;  // keeps the 16-bit count from wrapping
    if (historyLength == 0) {
        return current;
    }
    if (mVotes.size() != historyLength) {
        mVotes.assign(historyLength, 0);
        mVoteCount = 0;
    }
    bool result = current;
    if (mVoteCount >= historyLength) {
        if (mVoteCount >= kCountLimit) {
            mVoteCount = historyLength;
        }
        result = Vote(mVotes, current);
    }
    std::rotate(mVotes.begin(), mVotes.begin() + 1, mVotes.end());
    mVotes.back() = current ? 1 : 0;
    ++mVoteCount;
    return result;
}
