#include "host/media/media_reader.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "host/channels.h"
#include "host/failure.h"
#include "host/media/media_samples.h"

namespace {

constexpr int kHighestMediaRate = 768000;
constexpr int kMostPacketBytes = 16 << 20;
constexpr std::int64_t kMostFramesAPacket = 1 << 20;
constexpr std::int64_t kMostDamagedFirst = 1000;  ///< packets, before the first that can be decoded

// Timestamps against decoded frames, in s.
constexpr double kTolerance = 0.05;  // they are rounded to milliseconds, or to a video's frames
constexpr std::int64_t kLongestGap = 600;
constexpr std::int64_t kLongestOverlap = 10;
constexpr std::int64_t kMostSilence = 3600;

constexpr double kCutSeconds = 0.5;  ///< how much less than stated is reported

bool IsWide(const AVCodecContext& decoder) {
    const AVCodecDescriptor* codec = avcodec_descriptor_get(decoder.codec_id);
    const bool lossless = codec != nullptr && (codec->props & AV_CODEC_PROP_LOSSLESS) != 0 &&
                          (codec->props & AV_CODEC_PROP_LOSSY) == 0;
    const int bits = decoder.bits_per_raw_sample > 0
                         ? decoder.bits_per_raw_sample
                         : 8 * av_get_bytes_per_sample(decoder.sample_fmt);
    return lossless && bits > 16;
}

}  // namespace

MediaReader::MediaReader(const std::string& path, int track, ReadOptions options,
                         const std::string& name)
    : mName(name),
      mOptions(std::move(options)),
      mInput(path, name, MediaInput::Probing::kAudio),
      mIndex(mInput.AudioTrack(track)),
      mPacket(Allocated(av_packet_alloc())),
      mFrame(Allocated(av_frame_alloc())) {
    for (int i = 0; i < static_cast<int>(mInput.Context().nb_streams); ++i) {
        mInput.Stream(i).discard = i == mIndex ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
    OpenDecoder();
    if (!Decode()) {
        mInput.Fail(mDamaged == 0 ? "contains no audio" : "is damaged: no audio can be decoded");
    }
}

void MediaReader::OpenDecoder() {
    const AVStream& stream = mInput.Stream(mIndex);
    if (stream.codecpar->codec_id == AV_CODEC_ID_NONE) {
        mInput.Fail("contains audio of an unknown codec");
    }
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    const auto fail = [&](int error) {
        mInput.Fail(std::string("contains ") + avcodec_get_name(stream.codecpar->codec_id) +
                    " audio, which cannot be decoded: " + LibavError(error));
    };
    if (codec == nullptr) {
        fail(AVERROR_DECODER_NOT_FOUND);
    }
    mDecoder.reset(Allocated(avcodec_alloc_context3(codec)));
    int error = avcodec_parameters_to_context(mDecoder.get(), stream.codecpar);
    mDecoder->pkt_timebase = stream.time_base;
    mDecoder->thread_count = 1;
    mDecoder->max_samples = kMostFramesAPacket;
    mDecoder->codec_whitelist = mInput.Context().codec_whitelist == nullptr
                                    ? nullptr
                                    : av_strdup(mInput.Context().codec_whitelist);
    error = error < 0 ? error : avcodec_open2(mDecoder.get(), codec, nullptr);
    if (error < 0) {
        fail(error);
    }
}

/// The decoder's, which may differ from what the container states.
void MediaReader::TakeFormat() {
    const int channels = mFrame->ch_layout.nb_channels;
    if (channels > kMostChannels) {
        mInput.Fail(TooManyChannels(channels));
    }
    if (channels < 1 || mFrame->sample_rate < 1 || mFrame->sample_rate > kHighestMediaRate) {
        mInput.Fail("is damaged: it states no sample rate");
    }
    mFormat = {mFrame->sample_rate, channels,
               IsWide(*mDecoder) ? SampleFormat::kFloat : SampleFormat::kS16};
    mNext = mFrame->best_effort_timestamp == AV_NOPTS_VALUE ? 0 : FrameTime();
    mStart = StartOf(mNext);
    TakeLength();
}

/// Where the track starts: at 0 if its timestamp differs by no more than its rounding, or if it is arbitrary and nothing
/// else plays beside it.
std::int64_t MediaReader::StartOf(std::int64_t first) const {
    const double tick = av_q2d(mInput.Stream(mIndex).time_base) * mFormat.sampleRate;
    const bool isRounding = std::abs(static_cast<double>(first)) <= tick;
    return isRounding || !(mInput.IsAbsolute() || mInput.HasVideo()) ? 0 : first;
}

void MediaReader::TakeLength() {
    const AVStream& stream = mInput.Stream(mIndex);
    const AVFormatContext& file = mInput.Context();
    const AVRational frames = {1, mFormat.sampleRate};
    std::int64_t length = 0;
    if (stream.duration != AV_NOPTS_VALUE) {
        length = Rescaled(stream.duration, stream.time_base, frames);
    } else if (file.duration != AV_NOPTS_VALUE) {
        length = Rescaled(file.duration, kMicroseconds, frames);
    }
    if (length > 0) {
        mFrames = length;
    }
}

/// Makes more frames available. @return false at the end
bool MediaReader::Decode() {
    mAhead.clear();
    mTaken = 0;
    while (mAhead.empty() && !mEnded) {
        const int error = avcodec_receive_frame(mDecoder.get(), mFrame.get());
        if (error == 0) {
            TakeFrame();
        } else if (error == AVERROR_EOF || (error == AVERROR(EAGAIN) && !SendPacket())) {
            End();
        } else if (error != AVERROR(EAGAIN)) {
            NoteDamage();
        }
    }
    return !mAhead.empty();
}

/// @return false once the decoder has been flushed
bool MediaReader::SendPacket() {
    while (mEnd == 0) {
        av_packet_unref(mPacket.get());
        mEnd = mInput.ReadPacket(*mPacket);
        if (mEnd != 0) {
            return avcodec_send_packet(mDecoder.get(), nullptr) == 0;
        }
        if (mPacket->stream_index != mIndex) {
            continue;
        }
        if (mPacket->size > kMostPacketBytes ||
            avcodec_send_packet(mDecoder.get(), mPacket.get()) < 0) {
            NoteDamage();
            continue;
        }
        return true;
    }
    return false;
}

void MediaReader::NoteDamage() {
    ++mDamaged;
    if (mOptions.strict || (mDecoded == 0 && mDamaged > kMostDamagedFirst)) {
        mInput.Fail("is damaged: " + LibavError(AVERROR_INVALIDDATA));
    }
}

void MediaReader::TakeFrame() {
    if (mFrame->nb_samples <= 0) {
        return;
    }
    if (mFormat.sampleRate == 0) {
        TakeFormat();
    }
    if (mFrame->sample_rate != mFormat.sampleRate ||
        mFrame->ch_layout.nb_channels != mFormat.channels) {
        mInput.Fail("changes its sample rate or channels after " + Seconds(mDecoded) +
                    ", which is not supported");
    }
    if (!AppendSamples(*mFrame, mAhead)) {
        mInput.Fail("contains samples of an unknown format");
    }
    if (mFrame->best_effort_timestamp != AV_NOPTS_VALUE) {
        Align(FrameTime());
    }
    TrimPadding();
    const auto frames = static_cast<std::int64_t>(mAhead.size()) / std::int64_t{mFormat.channels};
    mNext += frames;
    mDecoded += frames + mSilence;
}

/// Drops the padding of the last packet, which an edit list states and libavformat keeps.
void MediaReader::TrimPadding() {
    const std::string_view container = mInput.Context().iformat->name;
    const std::int64_t channels = mFormat.channels;
    const auto frames = static_cast<std::int64_t>(mAhead.size()) / channels;
    const std::int64_t excess = mDecoded + mSilence + frames - mFrames.value_or(0);
    if (container.starts_with("mov") && mFrames && excess > 0 && excess < frames) {
        mAhead.resize(static_cast<std::size_t>((frames - excess) * channels));
    }
}

/// Brings the frames just decoded in step with their timestamp.
void MediaReader::Align(std::int64_t at) {
    const std::int64_t rate = mFormat.sampleRate;
    const std::int64_t gap = at - mNext;
    if (std::abs(gap) <= static_cast<std::int64_t>(kTolerance * static_cast<double>(rate))) {
        return;
    }
    if (gap > kLongestGap * rate || gap < -kLongestOverlap * rate) {
        NoteDamage();
        mNext = at;
    } else if (gap > 0) {
        mSilence = gap;
        mSilences += gap;
        mNext = at;
        if (mSilences > kMostSilence * rate) {
            mInput.Fail("is damaged: more than an hour is missing between its packets");
        }
    } else {
        const auto drop = static_cast<std::size_t>(-gap * mFormat.channels);
        mAhead.erase(mAhead.begin(),
                     mAhead.begin() + static_cast<std::ptrdiff_t>(std::min(drop, mAhead.size())));
    }
}

std::size_t MediaReader::Read(float* samples, std::size_t frames) {
    const auto channels = static_cast<std::size_t>(mFormat.channels);
    std::size_t read = 0;
    while (read < frames) {
        const std::size_t wanted = frames - read;
        float* out = samples + read * channels;
        if (mSilence > 0) {
            const auto silent = std::min(wanted, static_cast<std::size_t>(mSilence));
            std::fill_n(out, silent * channels, 0.0F);
            mSilence -= static_cast<std::int64_t>(silent);
            read += silent;
        } else if (mTaken < mAhead.size()) {
            const std::size_t held = std::min(wanted, (mAhead.size() - mTaken) / channels);
            std::copy_n(mAhead.begin() + static_cast<std::ptrdiff_t>(mTaken), held * channels, out);
            mTaken += held * channels;
            read += held;
        } else if (!Decode()) {
            break;
        }
    }
    return read;
}

std::size_t MediaReader::Read(short* samples, std::size_t frames) {
    std::vector<float> decoded(frames * static_cast<std::size_t>(mFormat.channels));
    const std::size_t read = Read(decoded.data(), frames);
    std::transform(decoded.begin(),
                   decoded.begin() + static_cast<std::ptrdiff_t>(
                                         read * static_cast<std::size_t>(mFormat.channels)),
                   samples, FromFloat<short>);
    return read;
}

void MediaReader::End() {
    mEnded = true;
    if (mDecoded == 0) {
        return;  // the constructor reports it
    }
    const AVStream& stream = mInput.Stream(mIndex);
    const bool isStated = stream.duration != AV_NOPTS_VALUE &&
                          mInput.Context().duration_estimation_method == AVFMT_DURATION_FROM_STREAM;
    const bool isShort = isStated && static_cast<double>(mFrames.value_or(0) - mDecoded) >
                                         kCutSeconds * mFormat.sampleRate;
    if (mEnd != AVERROR_EOF || mInput.IsCut() || isShort) {
        const std::string cut =
            "is cut off after " + Seconds(mDecoded) + (isShort ? " of " + Seconds(*mFrames) : "");
        if (mOptions.strict) {
            mInput.Fail(cut);
        }
        Warn(cut);
    }
    if (mDamaged > 0) {
        Warn("is damaged: " + std::to_string(mDamaged) +
             (mDamaged == 1 ? " packet is" : " packets are") + " replaced by silence");
    }
    if (mSilences > 0) {
        Warn("lacks " + Seconds(mSilences) + " of its sound: silence takes its place");
    }
    mFrames = mDecoded;
}

/// When the decoded frame plays, in frames.
std::int64_t MediaReader::FrameTime() const {
    const AVStream& stream = mInput.Stream(mIndex);
    const AVRational frames = {1, mFormat.sampleRate};
    const std::int64_t origin = Rescaled(mInput.Origin(), kMicroseconds, frames);
    const std::int64_t time = Rescaled(mFrame->best_effort_timestamp, stream.time_base, frames);
    constexpr std::int64_t kFar = std::int64_t{1} << 50;  // sums of timestamps cannot overflow
    return std::clamp(time, -kFar, kFar) - std::clamp(origin, -kFar, kFar);
}

std::string MediaReader::Seconds(std::int64_t frames) const {
    return SecondsText(frames, mFormat.sampleRate);
}

void MediaReader::Warn(const std::string& remark) const {
    mOptions.warn(Failure(mName, remark).what());
}
