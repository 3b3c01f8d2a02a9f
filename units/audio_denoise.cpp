#include "units/audio_denoise.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

#include "common/interleave.h"
#include "common/result_code.h"
#include "common/sample_format.h"
#include "units/suppressor_block.h"

using namespace audio_filter::internal;

namespace {

constexpr int kBufferSamples = static_cast<int>(kBlockSamples);

}  // namespace

AudioDenoise::AudioDenoise() = default;

AudioDenoise::~AudioDenoise() {
    Clear();
}

int AudioDenoise::Init(int sampleRate, int channels, SampleFmt fmt, int level) {
    mInited = false;
    if (sampleRate < 1 || channels < 1 || (!IsS16(fmt) && !IsFloat(fmt))) {
        return RESULT_INVALID;
    }
    Clear();
    mFmt = fmt;
    mBytesPerSample = SampleByteSize(fmt);
    mSampleRate = sampleRate;
    mChannels = channels;
    mFrameLen = sampleRate / 100;
    mBuffered = 0;
    StartChannel(mInL, mOutL, mNsL, level);
    if (mChannels == 2) {
        StartChannel(mInR, mOutR, mNsR, level);
    }
    mInited = true;
    return RESULT_OK;
}

void AudioDenoise::StartChannel(Buffer& in, Buffer& out, std::unique_ptr<NSWrap>& ns, int level) {
    in = std::make_unique<char[]>(Bytes(kBufferSamples));
    out = std::make_unique<char[]>(Bytes(kBufferSamples));
    ns = std::make_unique<NSWrap>();
    ns->Init(mSampleRate, static_cast<SampleFmt>(mFmt),
             level);  // a rejection shows only in the output
}

bool AudioDenoise::IsInited() {
    return mInited;
}

bool AudioDenoise::Config(int level) {
    const int bounded = std::clamp(level, 0, 3);
    // The interface sets the left channel three times and returns the third result.
    bool accepted = false;
    for (int attempt = 0; attempt < 3; ++attempt) {
        accepted = mNsL && mNsL->setLevel(bounded);
    }
    return accepted && mNsR && mNsR->setLevel(bounded);
}

int AudioDenoise::Process(const char* in, char* out, int& size) {
    if (in == nullptr || out == nullptr || size < 1) {
        return RESULT_BAD_ARGUMENT;
    }
    if (mChannels >= 3) {
        std::memmove(out, in, static_cast<std::size_t>(size));
        return RESULT_PASSED_THROUGH;
    }
    if (mChannels < 1) {
        return RESULT_NOT_INITIALISED;  // no Init was ever accepted
    }
    if (size % mChannels != 0) {
        return RESULT_INVALID;
    }
    if (!mInited || !mNsL || (mChannels == 2 && !mNsR)) {
        return RESULT_NOT_INITIALISED;
    }
    const int frameBytes = mBytesPerSample * mChannels;
    const int frames = size / mChannels / mBytesPerSample;
    if ((std::int64_t{frames} + mBuffered) * frameBytes > std::numeric_limits<int>::max()) {
        return RESULT_BAD_ARGUMENT;  // size could not count the output
    }
    size = 0;
    int consumed = 0;
    while (consumed < frames && mFrameLen > 0) {
        const int chunk = std::clamp(mFrameLen - mBuffered, 0, frames - consumed);
        Gather(in + static_cast<std::ptrdiff_t>(consumed) * frameBytes, chunk);
        consumed += chunk;
        if (mBuffered >= mFrameLen) {
            ProcessBlock(out + size);
            size += mFrameLen * frameBytes;
        }
    }
    return RESULT_OK;
}

/// Appends frames to the input blocks. Above 32000 Hz 10 ms exceed a suppressor block, but the
/// suppressor does not run there: samples that do not fit are dropped.
void AudioDenoise::Gather(const char* in, int frames) {
    if (mChannels == 2) {
        SplitLR(const_cast<char*>(in), frames);
        return;
    }
    const int fitting = std::min(frames, kBufferSamples - mBuffered);
    if (fitting > 0) {
        std::memcpy(mInL.get() + Bytes(mBuffered), in, Bytes(fitting));
    }
    mBuffered += frames;
}

/// Processes the collected block of every channel and writes 10 ms. A suppressor that fails leaves the
/// processed block unchanged.
void AudioDenoise::ProcessBlock(char* out) {
    const int held = std::min(mFrameLen, kBufferSamples);
    mNsL->Process(mInL.get(), mOutL.get());
    if (mChannels == 2) {
        mNsR->Process(mInR.get(), mOutR.get());
        CombineLR(out, held);
    } else {
        std::memcpy(out, mOutL.get(), Bytes(held));
    }
    std::memset(out + Bytes(held * mChannels), 0, Bytes((mFrameLen - held) * mChannels));
    mBuffered = 0;
}

int AudioDenoise::SplitLR(char* in, int frames) {
    const int counted = std::max(frames, 0);
    const int fitting = mInR ? std::min(counted, kBufferSamples - mBuffered) : 0;
    if (fitting > 0) {
        char* left = mInL.get() + Bytes(mBuffered);
        char* right = mInR.get() + Bytes(mBuffered);
        if (IsS16(mFmt)) {
            Deinterleave<short>(in, static_cast<std::size_t>(fitting), left, right);
        } else if (IsFloat(mFmt)) {
            Deinterleave<float>(in, static_cast<std::size_t>(fitting), left, right);
        }
    }
    mBuffered += counted;
    return RESULT_OK;
}

int AudioDenoise::CombineLR(char* out, int frames) {
    const int available = mOutR ? kBufferSamples : 0;
    const auto fitting = static_cast<std::size_t>(std::clamp(frames, 0, available));
    if (IsS16(mFmt)) {
        Interleave<short>(mOutL.get(), mOutR.get(), fitting, out);
    } else if (IsFloat(mFmt)) {
        Interleave<float>(mOutL.get(), mOutR.get(), fitting, out);
    }
    return RESULT_OK;
}

bool AudioDenoise::Reset() {
    if (!mNsL) {
        return true;
    }
    const std::size_t bytes = Bytes(kBufferSamples);
    std::memset(mInL.get(), 0, bytes);
    std::memset(mOutL.get(), 0, bytes);
    mNsL->Reset();
    if (mNsR) {
        std::memset(mInR.get(), 0, bytes);
        std::memset(mOutR.get(), 0, bytes);
        mNsR->Reset();
    }
    mBuffered = 0;
    return true;
}

bool AudioDenoise::Clear() {
    mInited = false;
    for (Buffer* buffer : {&mInL, &mInR, &mOutL, &mOutR}) {
        buffer->reset();
    }
    mNsL.reset();
    mNsR.reset();
    return true;
}

std::size_t AudioDenoise::Bytes(int samples) const {
    return static_cast<std::size_t>(samples) * static_cast<std::size_t>(mBytesPerSample);
}
