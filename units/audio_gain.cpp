#include "units/audio_gain.h"

#include <algorithm>

#include "common/result_code.h"
#include "common/sample_format.h"
#include "units/gain_curve.h"

using namespace audio_filter::internal;

namespace {

/// The whole samples of a block of `size` bytes; none for a null buffer.
template <typename Sample>
PcmView<Sample> WholeSamples(Sample* samples, int size) {
    const bool empty = samples == nullptr || size < 1;
    return {samples, empty ? 0 : static_cast<std::size_t>(size) / sizeof(Sample)};
}

}  // namespace

int AudioGain::Init(SampleFmt fmt) {
    mInited = false;
    if (!IsS16(fmt) && !IsFloat(fmt)) {
        return RESULT_INVALID;
    }
    mFmt = IsS16(fmt) ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT;
    mGain = kDefaultGain;
    mInited = true;
    return RESULT_OK;
}

bool AudioGain::IsInited() {
    return mInited;
}

bool AudioGain::Clear() {
    mInited = false;
    mFmt = SAMPLE_FMT_NONE;
    mGain = 0.0F;
    return true;
}

bool AudioGain::SetGain(float g) {
    mGain = g >= 0.0F ? std::min(g, 1.0F) : 0.0F;  // false for NaN
    return true;
}

int AudioGain::Process(const char* buf, int size) {
    if (buf == nullptr || size < 1) {
        return RESULT_BAD_ARGUMENT;
    }
    if (!mInited) {
        return RESULT_NOT_INITIALISED;
    }
    Process(buf, size, static_cast<SampleFmt>(mFmt));
    return RESULT_OK;
}

int AudioGain::Process(const char* buf, int size, SampleFmt fmt) {
    char* bytes = const_cast<char*>(buf);
    switch (fmt) {
        case SAMPLE_FMT_S16: return ProcessCore2(reinterpret_cast<short*>(bytes), size);
        case SAMPLE_FMT_FLT: return ProcessCore2(reinterpret_cast<float*>(bytes), size);
        default: return RESULT_UNSUPPORTED_FORMAT;
    }
}

int AudioGain::ProcessCore2(short* samples, int size) {
    if (mGain > 0.0F) {
        ApplyGain(MakeGainCurveS16(mGain), WholeSamples(samples, size));
    }
    return RESULT_OK;
}

int AudioGain::ProcessCore2(float* samples, int size) {
    if (mGain > 0.0F) {
        ApplyGain(MakeGainCurveFloat(mGain), WholeSamples(samples, size));
    }
    return RESULT_OK;
}

int AudioGain::ProcessCore(short* samples, int size) {
    if (mGain > 0.0F) {
        ApplyThreeSlopeGain(mGain, WholeSamples(samples, size));
    }
    return RESULT_OK;
}

int AudioGain::ProcessCore(float* samples, int size) {
    if (mGain > 0.0F) {
        ApplyThreeSlopeGain(mGain, WholeSamples(samples, size));
    }
    return RESULT_OK;
}
