#include "units/ns_wrap.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "common/result_code.h"
#include "units/float_bands.h"
#include "units/suppressor.h"
#include "units/suppressor_block.h"

using namespace audio_filter::internal;

namespace {

constexpr std::size_t kMemoryValues = 6;

template <typename Value>
Value* As(const std::unique_ptr<char[]>& bytes) {
    return reinterpret_cast<Value*>(bytes.get());
}

}  // namespace

NSWrap::NSWrap() = default;

NSWrap::~NSWrap() {
    Clear();
}

bool NSWrap::Init(int sampleRate, SampleFmt fmt, int level) {
    mInited = false;
    if (sampleRate < 0 || fmt == SAMPLE_FMT_NONE || level < 0 || level > 3) {
        return false;
    }
    mSampleRate = sampleRate;
    mFmt = fmt;
    mLevel = level;
    if (!mNs) {
        mNs = Suppressor::Create();
    }
    // After the restart, which resets the level to 0.
    if (!mNs || !mNs->Init(mSampleRate) || !mNs->SetLevel(mLevel)) {
        return false;
    }
    if (mFmt == SAMPLE_FMT_S16) {
        AllocateMissing<short, std::int32_t>();
    } else if (mFmt == SAMPLE_FMT_FLT) {
        AllocateMissing<float, double>();
    }
    return mFmt == mBufferFmt;
}

template <typename Sample, typename Memory>
void NSWrap::AllocateMissing() {
    if (mBufferFmt == mFmt) {
        return;
    }
    ReleaseBuffers();
    for (Bytes* band : {&mLowIn, &mHighIn, &mLowOut, &mHighOut}) {
        *band = std::make_unique<char[]>(kBlockSamples * sizeof(Sample));
    }
    for (Bytes* memory :
         {&mAnalysisState1, &mAnalysisState2, &mSynthesisState1, &mSynthesisState2}) {
        *memory = std::make_unique<char[]>(kMemoryValues * sizeof(Memory));
    }
    mBufferFmt = mFmt;
}

int NSWrap::Process(const char* in, char* out) {
    if (in == nullptr || out == nullptr || mBufferFmt != mFmt) {
        return RESULT_FAILURE;
    }
    switch (mFmt) {
        case SAMPLE_FMT_S16: return ProcessBlock<short, std::int32_t>(in, out);
        case SAMPLE_FMT_FLT: return ProcessBlock<float, double>(in, out);
        default: return RESULT_FAILURE;
    }
}

template <typename Sample, typename Memory>
int NSWrap::ProcessBlock(const char* in, char* out) {
    std::array<Sample, kBlockSamples> samples;
    std::memcpy(samples.data(), in, sizeof(samples));
    auto* lowIn = As<Sample>(mLowIn);
    auto* highIn = As<Sample>(mHighIn);
    auto* lowOut = As<Sample>(mLowOut);
    auto* highOut = As<Sample>(mHighOut);
    SplitBands(samples.data(), lowIn, highIn, As<Memory>(mAnalysisState1),
               As<Memory>(mAnalysisState2));
    mNs->Process(lowIn, highIn, lowOut, highOut);
    MergeBands(lowOut, highOut, samples.data(), As<Memory>(mSynthesisState1),
               As<Memory>(mSynthesisState2));
    std::memcpy(out, samples.data(), sizeof(samples));
    return RESULT_OK;
}

bool NSWrap::setLevel(int level) {
    return mNs && mNs->SetLevel(level);
}

bool NSWrap::Reset() {
    if (mFmt != SAMPLE_FMT_S16 && mFmt != SAMPLE_FMT_FLT) {
        return false;
    }
    if (mBufferFmt != SAMPLE_FMT_NONE) {
        const std::size_t value =
            mBufferFmt == SAMPLE_FMT_S16 ? sizeof(std::int32_t) : sizeof(double);
        for (Bytes* memory :
             {&mAnalysisState1, &mAnalysisState2, &mSynthesisState1, &mSynthesisState2}) {
            std::memset(memory->get(), 0, kMemoryValues * value);
        }
    }
    return true;
}

bool NSWrap::Clear() {
    mInited = false;
    ReleaseBuffers();
    mNs.reset();
    return true;
}

void NSWrap::ReleaseBuffers() {
    mBufferFmt = SAMPLE_FMT_NONE;
    for (Bytes* buffer : {&mLowIn, &mHighIn, &mLowOut, &mHighOut, &mAnalysisState1,
                          &mAnalysisState2, &mSynthesisState1, &mSynthesisState2}) {
        buffer->reset();
    }
}
