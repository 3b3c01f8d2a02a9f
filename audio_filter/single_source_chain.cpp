#include <cstring>

#include "audio_filter/audio_filter.h"
#include "audio_filter/log_address.h"
#include "common/result_code.h"
#include "common/sample_format.h"
#include "log/log_line.h"

using namespace audio_filter::internal;

namespace {

// The line tags are fixed: hosts search their logs for them.
constexpr const char* kFunction = "AudioFilter::SingleProcess";

/// The phase checker of each source type. Type 3 deliberately shares the microphone's.
constexpr int kCheckerOf[] = {0, 1, 2, 0};

}  // namespace

int AudioFilter::SingleProcess(char* inData, char* outData, int& size, AVSourceType source,
                               AVParam& param) {
    LogLine(PROCESS_LOG_DEBUG, {kFunction, 436}, "SingleProcess");
    if (ChecksPhase()) {
        CheckPhase(inData, size, source);
    }
    char* current = inData;
    bool denoised = false;
    if (mSwitchState[AP_DENOISE] && source == AV_SOURCE_MICROPHONE) {
        DetectMusic(inData, size);
        if (mNeedResample) {
            return RequestResampling(inData, outData, size, param);
        }
        denoised = Denoise(inData, size);
        current = mBuffer;
    }
    if (mSwitchState[AP_GAIN]) {
        current = denoised ? current : inData;
        LogLine(PROCESS_LOG_DEBUG, {kFunction, 523}, "[ASRC%d]AGC process, in:%d, byteSize:%d",
                source, LogAddress(current), size);
        mGain.Process(current, size);
    }
    LogLine(PROCESS_LOG_DEBUG, {kFunction, 530}, "copy to outbuf, outData:%d, out:%d, byteSize:%d",
            LogAddress(outData), LogAddress(current), size);
    std::memmove(outData, current, static_cast<std::size_t>(size));
    return RESULT_OK;
}

void AudioFilter::CheckPhase(char* inData, int size, AVSourceType source) {
    if (source < AV_SOURCE_MICROPHONE || source > AV_SOURCE_3) {
        return;
    }
    PhaseCheck& check = mPhaseCheck[kCheckerOf[source]];
    int code = RESULT_OK;
    if (IsFloat(mSampleFmt)) {
        LogLine(PROCESS_LOG_DEBUG, {kFunction, 455},
                "[ASRC%d]phase check process(float), in:%d , byteSize:%d", source,
                LogAddress(inData), size);
        code = check.Check(reinterpret_cast<float*>(inData), size / 4);
    } else if (IsS16(mSampleFmt)) {
        LogLine(PROCESS_LOG_DEBUG, {kFunction, 460},
                "[ASRC%d]phase check processed(s16), in:%d , byteSize:%d", source,
                LogAddress(inData), size);
        code = check.Check(reinterpret_cast<short*>(inData), size / 2);
    }
    if (code != RESULT_OK) {
        LogLine(PROCESS_LOG_ERROR, {kFunction, 465}, "Error in phase check!!!");
    }
}

/// Suppresses noise into the work buffer.
/// @return false if the suppressor is not initialised: the work buffer is then unchanged
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
