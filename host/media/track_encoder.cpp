#include "host/media/track_encoder.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "host/channels.h"
#include "host/failure.h"
#include "host/media/media_samples.h"

namespace {

constexpr std::size_t kPcmFrames = 4096;  ///< a packet
constexpr std::int64_t kLeastCeltBitRate = 20000;

/// The loudspeakers of each number of channels, as WAV files order them and Opus states them.
AVChannelLayout UsualLayout(int channels) {
    constexpr std::array<std::uint64_t, kMostChannels + 1> kSpeakers = {0,
                                                                        AV_CH_LAYOUT_MONO,
                                                                        AV_CH_LAYOUT_STEREO,
                                                                        AV_CH_LAYOUT_SURROUND,
                                                                        AV_CH_LAYOUT_QUAD,
                                                                        AV_CH_LAYOUT_5POINT0_BACK,
                                                                        AV_CH_LAYOUT_5POINT1_BACK,
                                                                        AV_CH_LAYOUT_6POINT1,
                                                                        AV_CH_LAYOUT_7POINT1};
    AVChannelLayout layout = {};
    av_channel_layout_from_mask(&layout, kSpeakers.at(static_cast<std::size_t>(channels)));
    return layout;
}

/// Whether a codec has no place for these loudspeakers: AAC takes side for back loudspeakers.
bool NeedsUsual(AVCodecID codec, const AVChannelLayout& layout) {
    const bool hasSides =
        layout.order == AV_CHANNEL_ORDER_NATIVE &&
        (layout.u.mask == AV_CH_LAYOUT_5POINT0 || layout.u.mask == AV_CH_LAYOUT_5POINT1);
    return codec == AV_CODEC_ID_OPUS || layout.order != AV_CHANNEL_ORDER_NATIVE ||
           (codec == AV_CODEC_ID_AAC && hasSides);
}

/// A layout that the encoder supports, with the channels of the track.
void SetLayout(AVCodecContext& codec, const AVChannelLayout& wanted) {
    const AVChannelLayout usual = UsualLayout(wanted.nb_channels);
    const AVChannelLayout* chosen = NeedsUsual(codec.codec_id, wanted) ? &usual : &wanted;
    const AVChannelLayout* own = codec.codec->ch_layouts;
    const AVChannelLayout* sameCount = nullptr;
    for (; own != nullptr && own->nb_channels > 0; ++own) {
        if (av_channel_layout_compare(own, chosen) == 0) {
            sameCount = chosen;
            break;
        }
        if (sameCount == nullptr && own->nb_channels == wanted.nb_channels) {
            sameCount = own;
        }
    }
    av_channel_layout_copy(&codec.ch_layout, sameCount == nullptr ? chosen : sameCount);
}

}  // namespace

TrackEncoder::TrackEncoder(const std::string& path, const EncoderChoice& choice,
                           const TrackPlan& plan)
    : mPath(path),
      mSpool(path),
      mCodec(Allocated(avcodec_alloc_context3(choice.codec))),
      mPacket(Allocated(av_packet_alloc())),
      mChannels(static_cast<std::size_t>(plan.layout.nb_channels)) {
    mCodec->sample_rate = choice.sampleRate;
    mCodec->sample_fmt = choice.samples;
    mCodec->bit_rate = choice.bitRate;
    mCodec->time_base = {1, choice.sampleRate};
    mCodec->thread_count = 1;
    if (choice.bitsPerSample == 24) {
        mCodec->bits_per_raw_sample = 24;
    }
    mCodec->flags |= AV_CODEC_FLAG_BITEXACT | (plan.globalHeader ? AV_CODEC_FLAG_GLOBAL_HEADER : 0);
    SetLayout(*mCodec, plan.layout);
    AVDictionary* options = nullptr;
    if (mCodec->codec_id == AV_CODEC_ID_OPUS &&
        choice.bitRate >= kLeastCeltBitRate * plan.layout.nb_channels) {
        // One of its two codecs alone: the other one shifts the low band by 5 samples.
        av_dict_set(&options, "application", "lowdelay", 0);
    }
    const int error = avcodec_open2(mCodec.get(), choice.codec, &options);
    av_dict_free(&options);
    if (error < 0) {
        throw Failure(path, std::string("cannot be encoded as ") + choice.codec->name + " at " +
                                std::to_string(choice.bitRate) + " bit/s: " + LibavError(error));
    }
    mNext = Rescaled(plan.start, {1, plan.sampleRate}, mCodec->time_base);
    if (choice.sampleRate != plan.sampleRate) {
        mConverter.emplace(plan.sampleRate, choice.sampleRate, plan.layout.nb_channels);
    }
    PlanPadding(plan);
}

void TrackEncoder::PlanPadding(const TrackPlan& plan) {
    int ahead = 0;  // frames of silence before the track
    if (mCodec->codec_id == AV_CODEC_ID_WMAV1 || mCodec->codec_id == AV_CODEC_ID_WMAV2) {
        ahead = mCodec->frame_size;  // the decoder skips more than the encoder pads
    } else if (!plan.statesPadding && mCodec->initial_padding > 0 && mCodec->frame_size > 0) {
        mLeftOut = (mCodec->initial_padding + mCodec->frame_size - 1) / mCodec->frame_size;
        ahead = mLeftOut * mCodec->frame_size - mCodec->initial_padding;
    }
    mAhead.resize(static_cast<std::size_t>(ahead) * mChannels);
    mNext -= ahead;
}

void TrackEncoder::Push(const float* samples, std::size_t frames) {
    std::vector<float> block(samples, samples + frames * mChannels);
    Take(mConverter ? mConverter->Convert(block, false) : block);
}

void TrackEncoder::Finish() {
    if (mConverter) {
        Take(mConverter->Convert({}, true));
    }
    if (!mAhead.empty()) {
        Encode(mAhead.data(), mAhead.size() / mChannels);
    }
    Send(nullptr);
}

void TrackEncoder::Take(const std::vector<float>& samples) {
    mAhead.insert(mAhead.end(), samples.begin(), samples.end());
    const std::size_t frames =
        mCodec->frame_size > 0 ? static_cast<std::size_t>(mCodec->frame_size) : kPcmFrames;
    const std::size_t step = frames * mChannels;
    std::size_t taken = 0;
    for (; mAhead.size() - taken >= step; taken += step) {
        Encode(mAhead.data() + taken, frames);
    }
    mAhead.erase(mAhead.begin(), mAhead.begin() + static_cast<std::ptrdiff_t>(taken));
}

void TrackEncoder::Encode(const float* samples, std::size_t frames) {
    const FramePtr frame(Allocated(av_frame_alloc()));
    frame->nb_samples = static_cast<int>(frames);
    frame->format = mCodec->sample_fmt;
    frame->sample_rate = mCodec->sample_rate;
    av_channel_layout_copy(&frame->ch_layout, &mCodec->ch_layout);
    const int error = av_frame_get_buffer(frame.get(), 0);
    if (error < 0 || !FillFrame(*frame, samples)) {
        Fail(error);
    }
    frame->pts = mNext;
    mNext += static_cast<std::int64_t>(frames);
    Send(frame.get());
}

void TrackEncoder::Send(const AVFrame* frame) {
    int error = avcodec_send_frame(mCodec.get(), frame);
    while (error >= 0) {
        error = avcodec_receive_packet(mCodec.get(), mPacket.get());
        if (error >= 0) {
            if (mLeftOut > 0) {
                --mLeftOut;
            } else {
                mSpool.Write(*mPacket);
            }
            av_packet_unref(mPacket.get());
        }
    }
    if (error != AVERROR(EAGAIN) && error != AVERROR_EOF) {
        Fail(error);
    }
}

void TrackEncoder::Fail(int error) const {
    throw Failure(mPath, std::string("cannot be encoded: ") + LibavError(error));
}
