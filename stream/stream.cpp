#include "stream/stream.h"

#include "common/result_code.h"
#include "common/sample_format.h"
#include "stream/engine.h"

namespace audio_filter {

namespace {

using internal::IsFloat;
using internal::IsPlanar;
using internal::IsS16;

constexpr int kMaxFrames = 192000;

constexpr bool IsWithin(int value, int least, int most) {
    return value >= least && value <= most;
}

bool IsSupported(const StreamFormat& format) {
    return IsWithin(format.sampleRate, 8000, 192000) && IsWithin(format.channels, 1, 8) &&
           (IsS16(format.samples) || IsFloat(format.samples)) && IsWithin(format.sources, 1, 16) &&
           IsWithin(format.maxFrames, 1, kMaxFrames);
}

/// Whether none of `sources` groups of buffers is null.
bool HasBuffers(const void* const* buffers, const StreamFormat& format, int sources) {
    const int count = sources * (IsPlanar(format.samples) ? format.channels : 1);
    for (int i = 0; i < count; ++i) {
        if (buffers == nullptr || buffers[i] == nullptr) {
            return false;
        }
    }
    return true;
}

}  // namespace

Stream::Stream() = default;

Stream::~Stream() = default;

int Stream::Init(const StreamFormat& format, const StreamSettings& settings) {
    if (!IsSupported(format)) {
        return RESULT_INVALID;
    }
    mEngine.reset();
    mEngine = std::make_unique<Engine>(format, settings);
    return RESULT_OK;
}

int Stream::Reset() {
    if (!mEngine) {
        return RESULT_NOT_INITIALISED;
    }
    const StreamFormat format = mEngine->Format();
    return Init(format, mEngine->Settings());
}

int Stream::Process(const void* const* in, void* const* out, int frames) {
    if (!mEngine) {
        return RESULT_NOT_INITIALISED;
    }
    const StreamFormat& format = mEngine->Format();
    if (frames < 1 || !HasBuffers(in, format, format.sources) || !HasBuffers(out, format, 1)) {
        return RESULT_BAD_ARGUMENT;
    }
    if (frames > format.maxFrames) {
        return RESULT_INVALID;
    }
    mEngine->Process(in, out, static_cast<std::size_t>(frames));
    return RESULT_OK;
}

int Stream::Drain(void* const* out, int frames) {
    if (!mEngine || !IsWithin(frames, 1, mEngine->Format().maxFrames) ||
        !HasBuffers(out, mEngine->Format(), 1)) {
        return 0;
    }
    return mEngine->Drain(out, frames);
}

void Stream::SetSettings(const StreamSettings& settings) {
    if (mEngine) {
        mEngine->SetSettings(settings);
    }
}

bool Stream::ReplaceSettings(const StreamSettings& expected, const StreamSettings& settings) {
    return !mEngine || mEngine->ReplaceSettings(expected, settings);
}

StreamSettings Stream::Settings() const {
    return mEngine ? mEngine->Settings() : StreamSettings();
}

int Stream::Latency() const {
    return mEngine ? static_cast<int>(mEngine->Latency()) : 0;
}

int Stream::BlockFrames() const {
    return mEngine ? static_cast<int>(mEngine->BlockFrames()) : 0;
}

bool Stream::IsMusic() const {
    return mEngine && mEngine->IsMusic();
}

bool Stream::IsReversed(int source) const {
    return mEngine && IsWithin(source, 0, 15) && mEngine->IsReversed(source);
}

float Stream::Reduction() const {
    return mEngine ? mEngine->Reduction() : 0.0F;
}

bool Stream::NextEvent(StreamEvent& event) {
    return mEngine && mEngine->NextEvent(event);
}

}  // namespace audio_filter
