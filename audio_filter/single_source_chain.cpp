#include <cstring>

#include "audio_filter/audio_filter.h"
#include "audio_filter/log_address.h"
#include "common/result_code.h"
#include "common/sample_format.h"
#include "log/log_line.h"

using namespace audio_filter::internal;

namespace {

constexpr const char* kFunction = "AudioFilter::SingleProcess";

/// Which phase checker follows a kind of source. The last one shares the microphone's, on purpose.
constexpr int kCheckerOf[] = {0, 1, 2, 0};

}  // namespace

int AudioFilter::SingleProcess(char* inData, char* outData, int& size, AVSourceType kind,
                               AVParam& param) {
    LogLine(PROCESS_LOG_DEBUG, {kFunction, 436}, "SingleProcess");
    if (ChecksPhase()) {
        CheckPhase(inData, size, kind);
    }
    char* current = inData;
    bool denoised = false;
    if (mSwitchState[AP_DENOISE] && kind == AV_SOURCE_MICROPHONE) {
        DetectMusic(inData, size);
        if (mNeedResample) {
            return AskForResampling(inData, outData, size, param);
        }
        denoised = Denoise(inData, size);
        current = mBuffer;
    }
    if (mSwitchState[AP_GAIN]) {
        current = denoised ? current : inData;
        LogLine(PROCESS_LOG_DEBUG, {kFunction, 523}, "[ASRC%d]AGC process, in:%d, byteSize:%d",
                kind, LogAddress(current), size);
        mGain.Process(current, size);
    }
    LogLine(PROCESS_LOG_DEBUG, {kFunction, 530}, "copy to outbuf, outData:%d, out:%d, byteSize:%d",
            LogAddress(outData), LogAddress(current), size);
    std::memmove(outData, current, static_cast<std::size_t>(size));
    return RESULT_OK;
}

bool AudioFilter::ChecksPhase() {
    return mSwitchState[AP_PHASE_CHECK] && mChannels == 2;
}

void AudioFilter::CheckPhase(char* inData, int size, AVSourceType kind) {
    if (kind < AV_SOURCE_MICROPHONE || kind > AV_SOURCE_3) {
        return;
    }
    PhaseCheck& check = mPhaseCheck[kCheckerOf[kind]];
    int code = 0;
    if (IsFloat(mSampleFmt)) {
        LogLine(PROCESS_LOG_DEBUG, {kFunction, 455},
                "[ASRC%d]phase check process(float), in:%d , byteSize:%d", kind, LogAddress(inData),
                size);
        code = check.Check(reinterpret_cast<float*>(inData), size / 4);
    } else if (IsS16(mSampleFmt)) {
        LogLine(PROCESS_LOG_DEBUG, {kFunction, 460},
                "[ASRC%d]phase check processed(s16), in:%d , byteSize:%d", kind, LogAddress(inData),
                size);
        code = check.Check(reinterpret_cast<short*>(inData), size / 2);
    }
    if (code != 0) {
        LogLine(PROCESS_LOG_ERROR, {kFunction, 465}, "Error in phase check!!!");
    }
}

/// Suppresses noise into the work buffer. @return false, and leaves that as it was, where it cannot
bool AudioFilter::Denoise(const char* inData, int& size) {
    if (!mDenoise.IsInited()) {
        LogLine(PROCESS_LOG_ERROR, {kFunction, 496}, "Audio denoisor is not inited!!!");
        return false;
    }
    LogLine(PROCESS_LOG_DEBUG, {kFunction, 491},
            "[ASRC%d]denoise process, in:%d, out:%d, byteSize:%d", 0, LogAddress(inData),
            LogAddress(mBuffer), size);
    mDenoise.Process(inData, mBuffer, size);
    return true;
}

/// Both chains: while music plays, noise is suppressed at its mildest.
void AudioFilter::DetectMusic(char* data, int size) {
    if (!mMusicCheck || !mClassifier.IsInited()) {
        return;
    }
    mIsMusic.exchange(mClassifier.MusicCheck(reinterpret_cast<unsigned char*>(data),
                                             static_cast<unsigned int>(size)));
    mDenoise.Config(mIsMusic ? 0 : mDenoiseLevel);
}

/// Both chains: hands a block back as it is, with the format that the suppressor wants.
int AudioFilter::AskForResampling(const char* data, char* outData, int size, AVParam& param) {
    std::memmove(outData, data, static_cast<std::size_t>(size));
    param.audioSampleRate = mProcessRate;
    param.audioChannels = mChannels;
    param.audioSampleFmt = mSampleFmt;
    return RESULT_NEEDS_RESAMPLING;
}
