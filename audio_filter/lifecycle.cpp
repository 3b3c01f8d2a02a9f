#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>

#include "audio_filter/audio_filter.h"
#include "audio_filter/stream_rate.h"
#include "common/result_code.h"
#include "common/sample_format.h"
#include "log/log_line.h"
#include "units/suppressor_block.h"

using namespace audio_filter::internal;

namespace {

constexpr int kDefaultDenoiseLevel = 3;

}  // namespace

AudioFilter::AudioFilter() {
    process_lock_init(&mLock);
    SwitchAllOff();
}

AudioFilter::~AudioFilter() {
    Clear();
    mLogger = nullptr;
    process_lock_destroy(&mLock);
}

int AudioFilter::Init(int sampleRate, int channels, SampleFmt fmt, ProcessSwitchMap* switches) {
    mInited = false;
    if (sampleRate < 1 || channels < 1 || fmt == SAMPLE_FMT_NONE) {
        LogLine(PROCESS_LOG_ERROR, {"AudioFilter::Init"}, "Input parameter is invalid!!!");
        return RESULT_INVALID;
    }
    SetRate(sampleRate);
    mChannels = channels;
    mSampleFmt = fmt;
    AllocateBuffers();
    InitUnits();
    SetMethod(switches);
    mInited = true;
    return RESULT_OK;
}

void AudioFilter::SetRate(int sampleRate) {
    mSampleRate = sampleRate;
    mMusicCheck = DetectsMusicAt(sampleRate);
    mNeedResample = NeedsResampling(sampleRate);
    mProcessRate = SuppressorRate(sampleRate);
}

/// One second and the block that the suppressor may return on top. Zeroed, because a chain whose unit
/// refuses a block outputs the previous contents.
void AudioFilter::AllocateBuffers() {
    ReleaseBuffers();
    constexpr std::int64_t kLimit = std::numeric_limits<std::int32_t>::max();
    const std::int64_t frameBytes = std::int64_t{GetSampleByteSize(mSampleFmt)} * mChannels;
    if (frameBytes > kLimit / mSampleRate) {
        throw std::bad_alloc();
    }
    const std::int64_t spare = mChannels <= 2 ? std::int64_t{kBlockSamples} : 0;
    mBufferBytes = static_cast<std::size_t>((mSampleRate + spare) * frameBytes);
    for (char** buffer : {&mBuffer, &mBuffer2}) {
        *buffer = static_cast<char*>(std::calloc(std::max<std::size_t>(mBufferBytes, 1), 1));
    }
    if (mBuffer == nullptr || mBuffer2 == nullptr) {
        ReleaseBuffers();
        throw std::bad_alloc();
    }
}

void AudioFilter::ReleaseBuffers() {
    for (char** buffer : {&mBuffer, &mBuffer2}) {
        std::free(*buffer);
        *buffer = nullptr;
    }
    mBufferBytes = 0;
}

/// A unit that fails stays off. The phase checkers and the music detector fail silently.
void AudioFilter::InitUnits() {
    for (PhaseCheck& check : mPhaseCheck) {
        check.Init(mSampleRate, IsPlanar(mSampleFmt));
    }
    mIsMusic = false;
    mDenoiseLevel = kDefaultDenoiseLevel;
    if (const int code = mDenoise.Init(mProcessRate, mChannels, mSampleFmt, mDenoiseLevel)) {
        LogLine(PROCESS_LOG_ERROR, {"AudioFilter::Init"},
                "audio denoisor init error, error code is %d", code);
    }
    if (mMusicCheck) {
        mClassifier.Init(static_cast<unsigned short>(mChannels), mSampleRate, mSampleFmt);
    }
    if (const int code = mGain.Init(mSampleFmt)) {
        LogLine(PROCESS_LOG_ERROR, {"AudioFilter::Init"}, "AGC init error, error code is %d", code);
    }
    if (const int code = mMixing.Init(mSampleFmt)) {
        LogLine(PROCESS_LOG_ERROR, {"AudioFilter::Init"},
                "audio mixer init error, error code is %d", code);
    }
}

bool AudioFilter::Clear() {
    const ProcessAutolock hold(&mLock);
    mInited = false;
    ReleaseBuffers();
    SwitchAllOff();
    for (PhaseCheck& check : mPhaseCheck) {
        check.Clear();
    }
    mDenoise.Clear();
    mGain.Clear();
    mMixing.Clear();
    LogLine(PROCESS_LOG_INFO, {"AudioFilter::Clear"}, "Audio filter is cleared");
    return true;
}

void AudioFilter::SwitchAllOff() {
    for (int kind = AP_DENOISE; kind <= AP_TRANSLATE; ++kind) {
        mSwitchState[static_cast<ProcessType>(kind)] = false;
    }
}

bool AudioFilter::SetListener(FilterListener* listener) {
    mListener = listener;
    return true;
}

bool AudioFilter::SetLogger(MediaProcessLog* logger) {
    mLogger = logger;
    return true;
}

int AudioFilter::GetSampleByteSize(SampleFmt fmt) {
    return SampleByteSize(fmt);
}
