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

constexpr const char* kFunction = "AudioFilter::MulitProcess";

/// Whether a kind of source repeats before the first one that is not known, which is logged.
bool RepeatsAKind(const std::vector<AVSourceType>& sources) {
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
    if (!RepeatsAKind(sources) && ChecksPhase()) {
        CheckPhases(inData, size, sources);
    }
    Mix(inData, size);
    char* current = mBuffer;
    if (mSwitchState[AP_DENOISE] && HasMicrophone(sources)) {
        DetectMusic(mBuffer, size);
        if (mNeedResample) {
            return AskForResampling(mBuffer, outData, size, param);
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
        // The line's wording depends on the gain.
        LogLine(PROCESS_LOG_DEBUG, {kFunction, gains ? 631 : 636},
                gains ? "copy to outbuf, outData:%d, in:%d, byteSize:%d"
                      : "copy to outbuf, outData:%d, out:%d, byteSize:%d",
                LogAddress(outData), LogAddress(current), size);
        std::memcpy(outData, current, static_cast<std::size_t>(size));
    }
    return RESULT_OK;
}

/// Each block by the checker of its kind. The last kind takes that of the block before, on purpose.
void AudioFilter::CheckPhases(char* inData, int size, const std::vector<AVSourceType>& sources) {
    PhaseCheck* check = &mPhaseCheck[1];
    char* block = inData;
    for (const AVSourceType kind : sources) {
        if (kind >= AV_SOURCE_MICROPHONE && kind < AV_SOURCE_3) {
            check = &mPhaseCheck[kind];
        }
        if (IsFloat(mSampleFmt)) {
            LogLine(PROCESS_LOG_DEBUG, {kFunction, 557},
                    "[ASRC%d]multi phase check process(float), in:%d, byteSize:%d", kind,
                    LogAddress(block), size);
            check->Check(reinterpret_cast<float*>(block), size / 4);
        } else if (IsS16(mSampleFmt)) {
            LogLine(PROCESS_LOG_DEBUG, {kFunction, 561},
                    "[ASRC%d]multi phase check process(s16), in:%d, byteSize:%d", kind,
                    LogAddress(block), size);
            check->Check(reinterpret_cast<short*>(block), size / 2);
        }
        block += size;
    }
}

/// Mixes all blocks into the work buffer. A mix that is refused leaves the size of all blocks,
/// which that buffer may not hold.
void AudioFilter::Mix(const char* inData, int& size) {
    int total = mSrcNum * size;
    LogLine(PROCESS_LOG_DEBUG, {kFunction, 586},
            "[ASRC mixed]mix process, in:%d, out:%d, size:%d, mSrcNum:%d", LogAddress(inData),
            LogAddress(mBuffer), total, mSrcNum);
    mMixing.Process(inData, mBuffer, total, mSrcNum);
    size = static_cast<int>(std::min(static_cast<std::size_t>(total), mBufferBytes));
}

bool AudioFilter::CheckSameSrcType(std::vector<AVSourceType> sources) {
    return RepeatsAKind(sources);
}

bool AudioFilter::CheckMultiMicSrc(std::vector<AVSourceType> sources) {
    return HasSeveralMicrophones(sources);
}

bool AudioFilter::HaveMicSrc(std::vector<AVSourceType> sources) {
    return HasMicrophone(sources);
}
