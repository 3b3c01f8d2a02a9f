#include "plugins/gstreamer/timed_stream.h"

#include <algorithm>
#include <cstring>

#include "common/result_code.h"

namespace audio_filter {

namespace {

/// Timestamps of containers are rounded to up to 1 ms; those of live sources jitter.
constexpr GstClockTime kJitter = 10 * GST_MSECOND;
constexpr GstClockTime kJitterOfMarked = GST_MSECOND;  ///< where the buffer is marked DISCONT

bool IsPlanar(const GstAudioInfo& info) {
    return info.layout == GST_AUDIO_LAYOUT_NON_INTERLEAVED;
}

std::size_t SampleBytes(const GstAudioInfo& info) {
    return static_cast<std::size_t>(GST_AUDIO_INFO_BPS(&info));
}

std::size_t FrameBytes(const GstAudioInfo& info) {
    return static_cast<std::size_t>(GST_AUDIO_INFO_BPF(&info));
}

SampleFmt Samples(const GstAudioInfo& info) {
    if (GST_AUDIO_INFO_IS_FLOAT(&info)) {
        return IsPlanar(info) ? SAMPLE_FMT_FLTP : SAMPLE_FMT_FLT;
    }
    return IsPlanar(info) ? SAMPLE_FMT_S16P : SAMPLE_FMT_S16;
}

}  // namespace

bool TimedStream::Init(const GstAudioInfo& info, const StreamSettings& settings) {
    const StreamFormat format = {.sampleRate = GST_AUDIO_INFO_RATE(&info),
                                 .channels = GST_AUDIO_INFO_CHANNELS(&info),
                                 .samples = Samples(info),
                                 .finite = true};
    if (mStream.Init(format, settings) != RESULT_OK) {
        return false;
    }
    mInfo = info;
    mPieceFrames = static_cast<std::size_t>(format.sampleRate) / 100;
    mAligned.assign(mPieceFrames * static_cast<std::size_t>(format.channels), 0.0F);
    mLatency = static_cast<std::size_t>(mStream.Latency());
    mHead = mLatency;
    mRunning = false;
    mReceived = 0;
    mSilent = 0;
    return true;
}

void TimedStream::Reset() {
    mStream.Reset();
    mHead = mLatency;
    mRunning = false;
    mReceived = 0;
    mSilent = 0;
}

bool TimedStream::Continues(const GstBuffer* buffer) const {
    const GstClockTime timestamp = GST_BUFFER_PTS(buffer);
    if (!mRunning || timestamp == GST_CLOCK_TIME_NONE || mEnd == GST_CLOCK_TIME_NONE) {
        return true;
    }
    const GstClockTime jump = timestamp > mEnd ? timestamp - mEnd : mEnd - timestamp;
    return jump <= (GST_BUFFER_IS_DISCONT(buffer) ? kJitterOfMarked : kJitter);
}

gssize TimedStream::Process(GstBuffer* buffer, const SettingsAt& settingsAt) {
    const bool isGap = GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_GAP);
    const std::size_t bytes = gst_buffer_get_size(buffer);
    if (bytes % FrameBytes(mInfo) != 0 ||
        (IsPlanar(mInfo) && gst_buffer_get_audio_meta(buffer) == nullptr)) {
        return -1;
    }
    if (isGap) {
        gst_buffer_memset(buffer, 0, 0, bytes);  // its content may be arbitrary
    }
    GstAudioBuffer mapped;
    if (gst_audio_buffer_map(&mapped, &mInfo, buffer, GST_MAP_READWRITE) == FALSE) {
        return -1;
    }
    const std::size_t frames = mapped.n_samples;
    if (!mRunning) {
        mEnd = GST_CLOCK_TIME_NONE;
        mRunning = true;
    }
    const GstClockTime start = GST_BUFFER_PTS_IS_VALID(buffer) ? GST_BUFFER_PTS(buffer) : mEnd;
    ProcessMapped(mapped, start, settingsAt);
    gst_audio_buffer_unmap(&mapped);

    mReceived += static_cast<std::int64_t>(frames);
    mEnd = start == GST_CLOCK_TIME_NONE ? start : start + Duration(frames);
    MarkGap(buffer, isGap, frames);
    const std::size_t dropped = std::min(mHead, frames);
    if (dropped > 0) {
        DropFirst(buffer, dropped);
        GST_BUFFER_FLAG_SET(buffer, GST_BUFFER_FLAG_DISCONT);
        mHead -= dropped;
    }
    SetTimes(buffer, start, mLatency - dropped, frames - dropped);
    return static_cast<gssize>(frames - dropped);
}

GstBuffer* TimedStream::Drain() {
    if (!mRunning) {
        return nullptr;
    }
    const std::size_t frames = mLatency - mHead;
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, mLatency * FrameBytes(mInfo), nullptr);
    if (IsPlanar(mInfo)) {
        gst_buffer_add_audio_meta(buffer, &mInfo, mLatency, nullptr);
    }
    GstAudioBuffer mapped;
    gst_audio_buffer_map(&mapped, &mInfo, buffer, GST_MAP_WRITE);
    mStream.Drain(mapped.planes, static_cast<int>(mLatency));
    gst_audio_buffer_unmap(&mapped);
    DropFirst(buffer, mHead);
    SetTimes(buffer, mEnd, frames, frames);

    mReceived += static_cast<std::int64_t>(mLatency);
    mHead = mLatency;
    mRunning = false;
    if (frames == 0) {
        gst_buffer_unref(buffer);
        return nullptr;
    }
    return buffer;
}

GstClockTime TimedStream::TimestampOf(std::int64_t frame) const {
    if (mEnd == GST_CLOCK_TIME_NONE) {
        return mEnd;
    }
    const std::int64_t back = std::max<std::int64_t>(mReceived - frame, 0);
    return mEnd - std::min(mEnd, Duration(static_cast<std::size_t>(back)));
}

GstClockTime TimedStream::Duration(std::size_t frames) const {
    return frames == 0 ? 0
                       : gst_util_uint64_scale_round(
                             frames, GST_SECOND, static_cast<guint64>(GST_AUDIO_INFO_RATE(&mInfo)));
}

void TimedStream::ProcessMapped(const GstAudioBuffer& mapped, GstClockTime start,
                                const SettingsAt& settingsAt) {
    const auto count = static_cast<std::size_t>(mapped.n_planes);
    const std::size_t step =
        SampleBytes(mInfo) * static_cast<std::size_t>(GST_AUDIO_INFO_CHANNELS(&mInfo)) / count;
    for (std::size_t done = 0; done < mapped.n_samples; done += mPieceFrames) {
        const std::size_t frames = std::min(mPieceFrames, mapped.n_samples - done);
        const bool timed = start != GST_CLOCK_TIME_NONE;
        mStream.SetSettings(settingsAt(timed ? start + Duration(done) : start));
        Planes planes = {};
        for (std::size_t i = 0; i < count; ++i) {
            planes[i] = static_cast<std::byte*>(mapped.planes[i]) + done * step;
        }
        ProcessPiece(planes, count, frames, step);
    }
}

/// Buffers that are parts of packets need not be aligned.
void TimedStream::ProcessPiece(const Planes& planes, std::size_t count, std::size_t frames,
                               std::size_t frameBytes) {
    const std::size_t align = SampleBytes(mInfo);
    std::array<void*, kMostChannels> own = {};
    auto* scratch = reinterpret_cast<std::byte*>(mAligned.data());
    for (std::size_t i = 0; i < count; ++i) {
        own[i] = planes[i];
        if (reinterpret_cast<std::uintptr_t>(planes[i]) % align != 0) {
            own[i] = scratch + i * mPieceFrames * frameBytes;
            std::memcpy(own[i], planes[i], frames * frameBytes);
        }
    }
    mStream.Process(own.data(), own.data(), static_cast<int>(frames));
    for (std::size_t i = 0; i < count; ++i) {
        if (own[i] != planes[i]) {
            std::memcpy(planes[i], own[i], frames * frameBytes);
        }
    }
}

/// The output is silent once the suppressor's windows hold nothing but silence.
void TimedStream::MarkGap(GstBuffer* buffer, bool isGap, std::size_t frames) {
    if (!isGap) {
        mSilent = 0;
        return;
    }
    if (mSilent < 2 * mLatency) {
        GST_BUFFER_FLAG_UNSET(buffer, GST_BUFFER_FLAG_GAP);
    }
    mSilent += frames;
}

void TimedStream::DropFirst(GstBuffer* buffer, std::size_t frames) const {
    GstAudioMeta* meta = gst_buffer_get_audio_meta(buffer);
    if (meta != nullptr) {
        meta->samples -= frames;
    }
    if (!IsPlanar(mInfo)) {
        gst_buffer_resize(buffer, static_cast<gssize>(frames * FrameBytes(mInfo)), -1);
        return;
    }
    for (int channel = 0; channel < GST_AUDIO_INFO_CHANNELS(&mInfo); ++channel) {
        meta->offsets[channel] += frames * SampleBytes(mInfo);
    }
}

/// @param late how many frames before `reference` the first frame lies
void TimedStream::SetTimes(GstBuffer* buffer, GstClockTime reference, std::size_t late,
                           std::size_t frames) const {
    if (reference == GST_CLOCK_TIME_NONE) {
        GST_BUFFER_PTS(buffer) = reference;
    } else {
        GST_BUFFER_PTS(buffer) = reference - std::min(reference, Duration(late));
    }
    GST_BUFFER_DTS(buffer) = GST_CLOCK_TIME_NONE;
    GST_BUFFER_DURATION(buffer) = Duration(frames);
    GST_BUFFER_OFFSET(buffer) = GST_BUFFER_OFFSET_NONE;
    GST_BUFFER_OFFSET_END(buffer) = GST_BUFFER_OFFSET_NONE;
}

}  // namespace audio_filter
