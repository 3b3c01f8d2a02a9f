#include "classifier/audio_classifier.h"

#include <algorithm>
#include <limits>
#include <new>

#include "classifier/features.h"
#include "classifier/framing.h"
#include "classifier/spectrum.h"
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

// The analysis counts samples and frames with 16 bits.
constexpr std::size_t kSamplesCounted = 65535;
constexpr std::size_t kSegmentsCounted = 65535;

/// A float as the 16-bit number that is stored of it: truncated, and beyond 16 bits wrapped. What
/// 32 bits cannot hold becomes 0.
std::int16_t Truncated(float sample) {
    constexpr float kLimit = 2147483648.0F;
    const bool fits = sample >= -kLimit && sample < kLimit;
    return static_cast<std::int16_t>(fits ? static_cast<std::int32_t>(sample) : 0);
}

}  // namespace

AudioClassifier::AudioClassifier() = default;
AudioClassifier::~AudioClassifier() = default;

int AudioClassifier::Init(unsigned short channels, int sampleRate, SampleFmt format) {
    mInited = false;
    const int refused = mDenoise.Init(kSuppressorRate, 1, format, kSuppressorLevel);
    if (refused != 0) {
        return refused;
    }
    mBytesPerSample = getSampleByte(format);
    mSampleRate = sampleRate;
    mChannels = channels;
    mFormat = format;

    const std::int64_t history = std::int64_t{mBytesPerSample} * std::max(sampleRate, 0) * 4;
    // More than two channels are never listened to. The history is made without any, too.
    const std::int64_t heardChannels = std::min<std::int64_t>(channels, 2);
    const std::int64_t largest = std::max(history, history * heardChannels);
    if (largest > std::numeric_limits<std::int32_t>::max()) {
        throw std::bad_alloc();
    }
    const auto historyBytes = static_cast<std::size_t>(history);
    const auto blockBytes = static_cast<std::size_t>(history * heardChannels);
    const std::size_t splitBytes = channels == 2 ? blockBytes : 0;
    mHistory = Bytes(historyBytes);
    mDenoised = Bytes(blockBytes + kBlockSamples * mBytesPerSample);  // a frame may come on top
    mLeft = Bytes(splitBytes);
    mRight = Bytes(splitBytes);
    mGathered = std::min(mGathered, static_cast<unsigned int>(historyBytes / mBytesPerSample));
    PrepareAnalysis();
    mInited = true;
    return RESULT_OK;
}

/// Makes what an analysis takes, where the history is long enough for one.
void AudioClassifier::PrepareAnalysis() {
    const algoParam param = getAlgoParam(static_cast<unsigned short>(mSampleRate));
    if (Room() < kHopsGathered * param.hop + param.frameLength) {
        return;
    }
    mVotes.reserve(kVotes);
    CacheWindow(param.frameLength);
    mSignal.resize(std::min(Room(), kSamplesCounted));
    mEnergies.reserve(std::min((Room() - param.frameLength) / param.hop + 1, kSegmentsCounted));
    mMagnitudes.resize(param.bandStart);
    if (mTransform == nullptr || mTransform->Size() != param.fftSize) {
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
    if (data == nullptr || length == 0 || mChannels == 0) {
        return mSmoothedResult;
    }
    const algoParam param = getAlgoParam(static_cast<unsigned short>(mSampleRate));
    const std::size_t samples = std::min<std::size_t>(
        length / mChannels / mBytesPerSample, mDenoised.size() / mBytesPerSample - kBlockSamples);
    Hear(data, static_cast<int>(samples));
    if (mGathered < kHopsGathered * param.hop + param.frameLength) {
        Gather(samples);
        return mSmoothedResult;
    }
    mRawResult = Analyse(param);
    mSmoothedResult = preRetRefer(mRawResult, kVotes);
    mGathered = 0;
    return mSmoothedResult;
}

/// Samples that the history can hold. The buffers of a block hold as many for each of two channels.
std::size_t AudioClassifier::Room() const {
    return mHistory.size() / mBytesPerSample;
}

/// Suppresses the noise of a block. More than two channels leave the last block as it is.
void AudioClassifier::Hear(unsigned char* data, int samples) {
    char* in = reinterpret_cast<char*>(data);
    if (mChannels == 2) {
        splitLR(in, mLeft.data(), mRight.data(), samples, mFormat);
        in = reinterpret_cast<char*>(mLeft.data());
    }
    if (mChannels <= 2) {
        int size = samples * mBytesPerSample;
        mDenoise.Process(in, reinterpret_cast<char*>(mDenoised.data()), size);
    }
}

/// Adds as many samples as have come in, whatever the suppressor gave out for them.
void AudioClassifier::Gather(std::size_t samples) {
    const std::size_t width = mBytesPerSample;
    const std::size_t count = std::min(samples, Room() - mGathered);
    if (IsS16(mFormat)) {
        // Not memcpy: at no rate there is no history, whose address is null.
        std::copy_n(mDenoised.data(), count * width, mHistory.data() + mGathered * width);
    } else if (IsFloat(mFormat)) {
        // Stored as 16-bit numbers, but analysed as floats: callers rely on that mismatch.
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

/// As much of what has been gathered as a 16-bit count of it reaches. The rest counts as zeros.
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
        mWindow.resize(length);
        HammingWindow(mWindow, 1.0F);
    }
}
