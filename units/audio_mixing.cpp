#include "units/audio_mixing.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "common/pcm_view.h"
#include "common/result_code.h"
#include "common/sample_format.h"
#include "units/kernels.h"

using namespace audio_filter::internal;

namespace {

void Enter(PcmView<const short> samples, short* row) {
    BestKernels().toMixerS16(samples, row);
}
void Enter(PcmView<const float> samples, short* row) {
    BestKernels().toMixerFloat(samples, row);
}

void Leave(const short* rows, std::size_t stride, std::size_t count, PcmView<short> out) {
    BestKernels().mixS16(rows, stride, count, out);
}
void Leave(const short* rows, std::size_t stride, std::size_t count, PcmView<float> out) {
    BestKernels().mixFloat(rows, stride, count, out);
}

}  // namespace

int AudioMixing::Init(SampleFmt fmt) {
    mInited = false;
    if (!IsS16(fmt) && !IsFloat(fmt)) {
        return RESULT_FAILURE;
    }
    mFmt = fmt;
    mInited = true;
    return RESULT_OK;
}

bool AudioMixing::IsInited() {
    return mInited;
}

bool AudioMixing::Clear() {
    mInited = false;
    mFmt = SAMPLE_FMT_NONE;
    return true;
}

int AudioMixing::Process(const char* in, char* out, int& size, int srcNum) {
    if (!mInited) {
        return RESULT_NOT_INITIALISED;
    }
    if (in == nullptr || out == nullptr || size < 1 || srcNum < 1 || srcNum > kMaxSources) {
        return RESULT_BAD_ARGUMENT;
    }
    if (srcNum == 1) {
        std::memmove(out, in, static_cast<std::size_t>(size));
        return RESULT_OK;
    }
    if (IsFloat(mFmt)) {
        return ProcessAs<float>(in, out, size, srcNum);
    }
    if (IsS16(mFmt)) {
        return ProcessAs<short>(in, out, size, srcNum);
    }
    return RESULT_PASSED_THROUGH;
}

template <typename Sample>
int AudioMixing::ProcessAs(const char* in, char* out, int& size, int srcNum) {
    auto* samples = reinterpret_cast<Sample*>(const_cast<char*>(in));
    int count = size / static_cast<int>(sizeof(Sample));
    const int code = DoProcess(samples, reinterpret_cast<Sample*>(out), count, srcNum);
    size = count * static_cast<int>(sizeof(Sample));
    return code;
}

int AudioMixing::DoProcess(short* in, short* out, int& count, int srcNum) {
    return Mix(in, out, count, srcNum);
}

int AudioMixing::DoProcess(float* in, float* out, int& count, int srcNum) {
    return Mix(in, out, count, srcNum);
}

template <typename Sample>
int AudioMixing::Mix(Sample* in, Sample* out, int& count, int srcNum) {
    if (srcNum < 1 || srcNum > kMaxSources) {
        return RESULT_BAD_ARGUMENT;
    }
    if (count % srcNum != 0) {
        return RESULT_INVALID;
    }
    count = std::max(count / srcNum, 0);
    const auto length = static_cast<std::size_t>(count);
    const auto sources = static_cast<std::size_t>(srcNum);
    const PcmView<const Sample> input(in, length * sources);
    const PcmView<Sample> output(out, length);
    for (std::size_t pos = 0; pos < length; pos += kScratchSamples) {
        const std::size_t block = std::min(kScratchSamples, length - pos);
        for (std::size_t k = 0; k < sources; ++k) {
            Enter(input.Part(k * length + pos, block), mScratch[k]);
        }
        Leave(mScratch[0], kScratchSamples, sources, output.Part(pos, block));
    }
    return RESULT_OK;
}
