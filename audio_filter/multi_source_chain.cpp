#include <algorithm>
#include <cstring>

#include "audio_filter/audio_filter.h"
#include "audio_filter/log_address.h"
#include "common/result_code.h"
#include "common/sample_format.h"
#include "common/source_list.h"
#include "log/log_line.h"

using namespace audio_filter::internal;

namespace {

// The line tags of both functions are fixed: hosts search their logs for them.
constexpr const char* kFunction = "AudioFilter::MulitProcess";

/// Whether a source type repeats before the first unknown one, which is logged.
bool RepeatsAType(const std::vector<AVSourceType>& sources) {
    bool seen[4] = {};
    for (const AVSourceType source : sources) {
        if (source < AV_SOURCE_MICROPHONE || source > AV_SOURCE_3) {
            LogLine(PROCESS_LOG_ERROR, {"AudioFilter::CheckSameSrcType", 683},
                    "audio source check get a error type ");
            return false;
        }
        if (seen[source]) {
            return true;
        }
        seen[source] = true;
    }
    return false;
}

}  // namespace

int AudioFilter::MulitProcess(char* inData, char* outData, int& size,
                              std::vector<AVSourceType> sources, AVParam& param) {
    if (!RepeatsAType(sources) && ChecksPhase()) {
        CheckPhases(inData, size, sources);
    }
    Mix(inData, size);
    char* current = mBuffer;
    if (mSwitchState[AP_DENOISE] && HasMicrophone(sources)) {
        DetectMusic(mBuffer, size);
        if (mNeedResample) {
            return RequestResampling(mBuffer, outData, size, param);
        }
        LogLine(PROCESS_LOG_DEBUG, {kFunction, 619},
                "[ASRC mixed]denoise processed, in:%d, out:%d, byteSize:%d", LogAddress(mBuffer),
                LogAddress(outData), size);
        mDenoise.Process(mBuffer, outData, size);
        current = outData;
    }
    const bool gains = mSwitchState[AP_GAIN];
    if (gains) {
        LogLine(PROCESS_LOG_DEBUG, {kFunction, 628},
                "[ASRC mixed]AGC processed, in:%d, byteSize:%d", LogAddress(current), size);
        mGain.Process(current, size);
    }
    if (current != outData) {
        // The wording of the line depends on the gain switch.
        LogLine(PROCESS_LOG_DEBUG, {kFunction, gains ? 631 : 636},
                gains ? "copy to outbuf, outData:%d, in:%d, byteSize:%d"
                      : "copy to outbuf, outData:%d, out:%d, byteSize:%d",
                LogAddress(outData), LogAddress(current), size);
        std::memcpy(outData, current, static_cast<std::size_t>(size));
    }
    return RESULT_OK;
}

/// Checks each source block with the phase checker of its type. Type 3 and unknown types deliberately
/// use that of the block before.
void AudioFilter::CheckPhases(char* inData, int size, const std::vector<AVSourceType>& sources) {
    PhaseCheck* check = &mPhaseCheck[1];
    char* block = inData;
    for (const AVSourceType source : sources) {
        if (source >= AV_SOURCE_MICROPHONE && source < AV_SOURCE_3) {
            check = &mPhaseCheck[source];
        }
        if (IsFloat(mSampleFmt)) {
            LogLine(PROCESS_LOG_DEBUG, {kFunction, 557},
                    "[ASRC%d]multi phase check process(float), in:%d, byteSize:%d", source,
                    LogAddress(block), size);
            check->Check(reinterpret_cast<float*>(block), size / 4);
        } else if (IsS16(mSampleFmt)) {
            LogLine(PROCESS_LOG_DEBUG, {kFunction, 561},
                    "[ASRC%d]multi phase check process(s16), in:%d, byteSize:%d", source,
                    LogAddress(block), size);
            check->Check(reinterpret_cast<short*>(block), size / 2);
        }
        block += size;
    }
}

/// Mixes all source blocks into the work buffer. A refused mix leaves the size of all blocks, which
/// may exceed the work buffer.
void AudioFilter::Mix(const char* inData, int& size) {
    int total = mSrcNum * size;
    LogLine(PROCESS_LOG_DEBUG, {kFunction, 586},
            "[ASRC mixed]mix process, in:%d, out:%d, size:%d, mSrcNum:%d", LogAddress(inData),
            LogAddress(mBuffer), total, mSrcNum);
    mMixing.Process(inData, mBuffer, total, mSrcNum);
    size = static_cast<int>(std::min(static_cast<std::size_t>(total), mBufferBytes));
}

bool AudioFilter::CheckSameSrcType(std::vector<AVSourceType> sources) {
    return RepeatsAType(sources);
}

bool AudioFilter::CheckMultiMicSrc(std::vector<AVSourceType> sources) {
    return HasSeveralMicrophones(sources);
}

bool AudioFilter::HaveMicSrc(std::vector<AVSourceType> sources) {
    return HasMicrophone(sources);
}
