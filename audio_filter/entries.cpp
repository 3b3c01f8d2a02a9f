#include <cstring>
#include <utility>

#include "audio_filter/audio_filter.h"
#include "audio_filter/log_address.h"
#include "common/result_code.h"
#include "log/log_line.h"

using namespace audio_filter::internal;

namespace {

constexpr const char* kNothingWithValues =
    "Input nothing!!!inData = %d, outData = %d, size = %d, mSrcNum = %d";

/// The product, wrapped to 32 bits. No size can exceed a bound that does not fit 32 bits, so the
/// wrapped one can only refuse more.
int BoundOf(int sampleBytes, int channels, int sampleRate, int sources) {
    return static_cast<int>(static_cast<unsigned>(sampleBytes) * static_cast<unsigned>(channels) *
                            static_cast<unsigned>(sampleRate) * static_cast<unsigned>(sources));
}

}  // namespace

/// The checks that all entries share.
/// @param boundSources the seconds of the stream that the buffer may hold
/// @return RESULT_OK, or the result code of the refused call
int AudioFilter::CheckCall(const EntryTags& tags, const char* inData, const char* outData, int size,
                           int sources, int boundSources) {
    if (inData == nullptr || outData == nullptr || size <= 0 || sources <= 0) {
        LogLine(PROCESS_LOG_ERROR, {tags.function, tags.nothing}, tags.nothingText,
                LogAddress(inData), LogAddress(outData), size, sources);
        return RESULT_BAD_ARGUMENT;
    }
    // Before the first accepted Init, no stream bounds the size.
    const int bound = BoundOf(GetSampleByteSize(mSampleFmt), mChannels, mSampleRate, boundSources);
    if ((mSampleRate > 0 && size > bound) || size % sources != 0) {
        LogLine(PROCESS_LOG_ERROR, {tags.function, tags.error}, "Input parameter is error!!!");
        return RESULT_INVALID;
    }
    if (!mInited) {
        LogLine(PROCESS_LOG_ERROR, {tags.function, tags.notInited},
                "Have not been initialized yet!!!");
        return RESULT_NOT_INITIALISED;
    }
    return RESULT_OK;
}

int AudioFilter::Process(const char* inData, char* outData, int& size,
                         std::vector<AVSourceType> sources, AVParam& param,
                         unsigned long long /*timestamp*/) {
    const ProcessAutolock hold(&mLock);
    mSrcNum = static_cast<std::int32_t>(sources.size());
    if (const int refused = CheckCall({"AudioFilter::Process", kNothingWithValues, 275, 280, 285},
                                      inData, outData, size, mSrcNum, mSrcNum)) {
        return refused;
    }
    mInPlace = inData == outData;
    size /= mSrcNum;
    char* block = const_cast<char*>(inData);  // the chains write into it
    if (mSrcNum != 1 && mSwitchState[AP_MIXING]) {
        return MulitProcess(block, outData, size, std::move(sources), param);
    }
    return SingleProcess(block, outData, size, sources.front(), param);
}

int AudioFilter::ProcessResample(const char* inData, char* outData, int& size,
                                 std::vector<AVSourceType> sources, AVParam& param,
                                 unsigned long long /*timestamp*/) {
    const ProcessAutolock hold(&mLock);
    const auto count = static_cast<int>(sources.size());
    if (const int refused =
            CheckCall({"AudioFilter::ProcessResample", "Input nothing!!!", 320, 324, 328}, inData,
                      outData, size, count, 1)) {
        return refused;
    }
    size /= count;
    const char* current = inData;
    if (DenoisesResampled(param)) {
        const int code = mDenoise.Process(inData, outData, size);
        LogLine(PROCESS_LOG_DEBUG, {"AudioFilter::ProcessResample", 342},
                "[ASRC resample]denoise processed");
        if (code != RESULT_OK && code != RESULT_PASSED_THROUGH) {
            LogLine(PROCESS_LOG_ERROR, {"AudioFilter::ProcessResample", 345},
                    "Error in audio denoise!!!");
            return code;
        }
        current = outData;
    }
    if (mSwitchState[AP_GAIN]) {
        mGain.Process(current, size);
        LogLine(PROCESS_LOG_DEBUG, {"AudioFilter::ProcessResample", 354},
                "[ASRC resample]AGC processed");
    }
    if (current != outData) {
        std::memmove(outData, current, static_cast<std::size_t>(size));
    }
    return RESULT_RESAMPLED;
}

/// Whether a buffer has the format that the last Process requested. The number of sources of the last
/// Process or SyncProcessDelay counts, not this call's.
bool AudioFilter::DenoisesResampled(const AVParam& param) {
    return mSwitchState[AP_DENOISE] && param.audioSampleRate == mProcessRate &&
           param.audioChannels == mChannels && param.audioSampleFmt == mSampleFmt && mSrcNum == 1;
}

int AudioFilter::SyncProcessDelay(const char* inData, char* outData, int& size,
                                  std::vector<AVSourceType> sources) {
    const ProcessAutolock hold(&mLock);
    mSrcNum = static_cast<std::int32_t>(sources.size());
    if (const int refused =
            CheckCall({"AudioFilter::SyncProcessDelay", kNothingWithValues, 371, 376, 381}, inData,
                      outData, size, mSrcNum, mSrcNum)) {
        return refused;
    }
    if (mSrcNum != 1 && mSwitchState[AP_MIXING]) {
        const int code = mMixing.Process(inData, outData, size, mSrcNum);
        LogLine(PROCESS_LOG_DEBUG, {"AudioFilter::SyncProcessDelay", 396},
                "[ASRC delayed]Mix processed");
        return code;
    }
    size /= mSrcNum;
    std::memmove(outData, inData, static_cast<std::size_t>(size));
    return RESULT_OK;
}
