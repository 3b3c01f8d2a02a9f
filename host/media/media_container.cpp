#include "host/media/media_container.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "host/failure.h"
#include "host/media_extensions.h"

namespace {

constexpr std::array<MediaContainer, 14> kContainers = {{
    {".mp4", "mp4", "MP4", AV_CODEC_ID_AAC, true, true},
    {".m4v", "mp4", "MP4", AV_CODEC_ID_AAC, true, true},
    {".mov", "mov", "QuickTime", AV_CODEC_ID_AAC, true, true},
    {".mkv", "matroska", "Matroska", AV_CODEC_ID_OPUS, true, true},
    {".webm", "webm", "WebM", AV_CODEC_ID_OPUS, true, true},
    {".m4a", "ipod", "M4A", AV_CODEC_ID_AAC, false, true},
    {".m4b", "ipod", "M4B", AV_CODEC_ID_AAC, false, true},
    {".mka", "matroska", "Matroska", AV_CODEC_ID_OPUS, false, true},
    {".mp3", "mp3", "MP3", AV_CODEC_ID_MP3, false, false},
    {".aac", "adts", "AAC", AV_CODEC_ID_AAC, false, false},
    {".opus", "opus", "Opus", AV_CODEC_ID_OPUS, false, false},
    {".ogg", "ogg", "Ogg", AV_CODEC_ID_VORBIS, false, true},
    {".oga", "oga", "Ogg", AV_CODEC_ID_VORBIS, false, true},
    {".wma", "asf", "WMA", AV_CODEC_ID_WMAV2, false, true},
}};

using MuxerCodecs = std::array<AVCodecID, 6>;

/// The codecs of muxers that check them only while they write the header; null for the others.
const MuxerCodecs* CodecsOf(std::string_view muxer) {
    static constexpr MuxerCodecs kWebm = {AV_CODEC_ID_VP8,    AV_CODEC_ID_VP9,  AV_CODEC_ID_AV1,
                                          AV_CODEC_ID_VORBIS, AV_CODEC_ID_OPUS, AV_CODEC_ID_WEBVTT};
    static constexpr MuxerCodecs kOpus = {AV_CODEC_ID_OPUS};
    static constexpr MuxerCodecs kIpod = {AV_CODEC_ID_AAC, AV_CODEC_ID_ALAC, AV_CODEC_ID_AC3};
    static constexpr MuxerCodecs kOgg = {AV_CODEC_ID_VORBIS, AV_CODEC_ID_OPUS, AV_CODEC_ID_FLAC,
                                         AV_CODEC_ID_SPEEX};
    static constexpr MuxerCodecs kAsf = {AV_CODEC_ID_WMAV1, AV_CODEC_ID_WMAV2, AV_CODEC_ID_MP3};
    return muxer == "webm"                    ? &kWebm
           : muxer == "opus"                  ? &kOpus
           : muxer == "ipod"                  ? &kIpod
           : muxer == "ogg" || muxer == "oga" ? &kOgg
           : muxer == "asf"                   ? &kAsf
                                              : nullptr;
}

/// What QuickTime's table of codecs lists and its muxer refuses.
bool IsForMp4Only(AVCodecID codec) {
    constexpr std::array<AVCodecID, 6> kCodecs = {AV_CODEC_ID_FLAC,   AV_CODEC_ID_OPUS,
                                                  AV_CODEC_ID_TRUEHD, AV_CODEC_ID_VP8,
                                                  AV_CODEC_ID_VP9,    AV_CODEC_ID_AV1};
    return std::find(kCodecs.begin(), kCodecs.end(), codec) != kCodecs.end();
}

/// Bit rates of lossy codecs for a lossless input, a channel.
constexpr std::int64_t kUsualBitRate = 96000;

bool IsLossless(AVCodecID id) {
    const AVCodecDescriptor* codec = avcodec_descriptor_get(id);
    return codec != nullptr && (codec->props & AV_CODEC_PROP_LOSSLESS) != 0 &&
           (codec->props & AV_CODEC_PROP_LOSSY) == 0;
}

bool IsPcm(AVCodecID id) {
    return id >= AV_CODEC_ID_PCM_S16LE && id < AV_CODEC_ID_ADPCM_IMA_QT;
}

/// libavcodec's own encoders of these formats are experimental or worse.
const AVCodec* EncoderOf(AVCodecID id) {
    switch (id) {
        case AV_CODEC_ID_MP3: return avcodec_find_encoder_by_name("libmp3lame");
        case AV_CODEC_ID_OPUS: return avcodec_find_encoder_by_name("libopus");
        case AV_CODEC_ID_VORBIS: return avcodec_find_encoder_by_name("libvorbis");
        default: break;
    }
    const AVCodec* encoder = avcodec_find_encoder(id);
    const bool usable =
        encoder != nullptr && (encoder->capabilities & AV_CODEC_CAP_EXPERIMENTAL) == 0;
    return usable ? encoder : nullptr;
}

AVCodecID PcmOf(OutputBits bits) {
    return bits == OutputBits::k16   ? AV_CODEC_ID_PCM_S16LE
           : bits == OutputBits::k24 ? AV_CODEC_ID_PCM_S24LE
                                     : AV_CODEC_ID_PCM_F32LE;
}

OutputBits BitsOf(const TrackFacts& track, AVCodecID codec, const OutputOptions& options) {
    if (options.bits) {
        return *options.bits;
    }
    const bool isFloat =
        track.codec == AV_CODEC_ID_PCM_F32LE || track.codec == AV_CODEC_ID_PCM_F32BE ||
        track.codec == AV_CODEC_ID_PCM_F64LE || track.codec == AV_CODEC_ID_PCM_F64BE;
    if (isFloat && IsPcm(codec)) {
        return OutputBits::kFloat;
    }
    return track.isWide ? OutputBits::k24 : OutputBits::k16;
}

AVCodecID ChooseCodec(const std::string& path, const MediaContainer& container,
                      const TrackFacts& track, const OutputOptions& options) {
    if (options.codec.empty()) {
        const bool isKept = CanHold(container, track.codec) && EncoderOf(track.codec) != nullptr;
        return isKept ? track.codec : container.usual;
    }
    if (options.codec == "pcm") {
        return PcmOf(BitsOf(track, AV_CODEC_ID_PCM_S16LE, options));
    }
    const AVCodecDescriptor* named = avcodec_descriptor_get_by_name(options.codec.c_str());
    if (named == nullptr || named->type != AVMEDIA_TYPE_AUDIO || EncoderOf(named->id) == nullptr) {
        throw Failure(path, "this build cannot encode " + options.codec);
    }
    return named->id;
}

AVSampleFormat FormatOf(const std::string& path, const AVCodec& codec,
                        std::optional<OutputBits> bits) {
    using Formats = std::array<AVSampleFormat, 4>;
    constexpr Formats kLossy = {AV_SAMPLE_FMT_FLT, AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_S16,
                                AV_SAMPLE_FMT_S16P};
    constexpr Formats k16 = {AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_S16P, AV_SAMPLE_FMT_NONE,
                             AV_SAMPLE_FMT_NONE};
    constexpr Formats k24 = {AV_SAMPLE_FMT_S32, AV_SAMPLE_FMT_S32P, AV_SAMPLE_FMT_NONE,
                             AV_SAMPLE_FMT_NONE};
    constexpr Formats kFloat = {AV_SAMPLE_FMT_FLT, AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_NONE,
                                AV_SAMPLE_FMT_NONE};
    const Formats& wanted = !bits                      ? kLossy
                            : *bits == OutputBits::k16 ? k16
                            : *bits == OutputBits::k24 ? k24
                                                       : kFloat;
    for (const AVSampleFormat format : wanted) {
        for (const AVSampleFormat* own = codec.sample_fmts;
             own != nullptr && *own != AV_SAMPLE_FMT_NONE; ++own) {
            if (*own == format && format != AV_SAMPLE_FMT_NONE) {
                return format;
            }
        }
    }
    throw Failure(path, std::string(avcodec_get_name(codec.id)) + " cannot hold these samples" +
                            (bits ? ": choose other --bits" : ""));
}

/// The lowest rate that keeps all of the band, or the highest there is.
int RateOf(const AVCodec& codec, int rate) {
    if (codec.id == AV_CODEC_ID_OPUS) {
        return 48000;  // that of its decoders; Matroska states its padding at no other
    }
    if (codec.supported_samplerates == nullptr) {
        return rate;
    }
    int above = 0;
    int highest = 0;
    for (const int* own = codec.supported_samplerates; *own != 0; ++own) {
        highest = std::max(highest, *own);
        if (*own >= rate && (above == 0 || *own < above)) {
            above = *own;
        }
    }
    return above == 0 ? highest : above;
}

std::int64_t BitRateOf(const AVCodec& codec, const TrackFacts& track,
                       const OutputOptions& options) {
    const std::int64_t wanted = options.bitRate     ? *options.bitRate
                                : track.bitRate > 0 ? track.bitRate
                                                    : kUsualBitRate * track.channels;
    const std::int64_t most = codec.id == AV_CODEC_ID_OPUS  ? 256000 * std::int64_t{track.channels}
                              : codec.id == AV_CODEC_ID_MP3 ? 320000
                                                            : wanted;
    return std::clamp<std::int64_t>(wanted, 6000, std::max<std::int64_t>(most, 6000));
}

void CheckChannels(const std::string& path, const AVCodec& codec, int channels) {
    const AVChannelLayout* layout = codec.ch_layouts;
    int most = 0;
    for (; layout != nullptr && layout->nb_channels > 0; ++layout) {
        if (layout->nb_channels == channels) {
            return;
        }
        most = std::max(most, layout->nb_channels);
    }
    if (most > 0) {
        throw Failure(path, std::string(avcodec_get_name(codec.id)) + " cannot hold " +
                                std::to_string(channels) + " channels");
    }
}

}  // namespace

const MediaContainer* MediaContainerOf(const std::string& path) {
    const std::string extension = LowerExtension(path);
    const auto* const found =
        std::find_if(kContainers.begin(), kContainers.end(),
                     [&](const MediaContainer& c) { return extension == c.extension; });
    return found == kContainers.end() ? nullptr : found;
}

bool CanHold(const MediaContainer& container, AVCodecID codec) {
    const AVOutputFormat* format = av_guess_format(container.muxer, nullptr, nullptr);
    if (format == nullptr || codec == AV_CODEC_ID_NONE) {
        return false;
    }
    if (codec == format->audio_codec) {
        return true;
    }
    if (const auto* const codecs = CodecsOf(container.muxer)) {
        return std::find(codecs->begin(), codecs->end(), codec) != codecs->end();
    }
    if (std::string_view(container.muxer) == "mov" && IsForMp4Only(codec)) {
        return false;
    }
    unsigned tag = 0;
    const bool hasTag =
        format->codec_tag != nullptr && av_codec_get_tag2(format->codec_tag, codec, &tag) != 0;
    const bool tagsDecide =
        format->codec_tag != nullptr && std::string_view(container.muxer) != "matroska";
    return hasTag ||
           (!tagsDecide && avformat_query_codec(format, codec, FF_COMPLIANCE_NORMAL) == 1);
}

EncoderChoice ChooseEncoder(const std::string& path, const MediaContainer& container,
                            const TrackFacts& track, const OutputOptions& options) {
    AVCodecID id = ChooseCodec(path, container, track, options);
    const bool isLossless = IsLossless(id);
    std::optional<OutputBits> bits;
    if (isLossless) {
        bits = BitsOf(track, id, options);
        id = IsPcm(id) ? PcmOf(*bits) : id;
    } else if (options.bits) {
        throw Failure(
            path, "--bits is for lossless codecs, not for " + std::string(avcodec_get_name(id)));
    }
    if (!CanHold(container, id)) {
        throw Failure(
            path, std::string(container.name) + " cannot hold " + avcodec_get_name(id) + " audio");
    }
    const AVCodec* codec = EncoderOf(id);
    if (codec == nullptr) {
        throw Failure(path, std::string("this build cannot encode ") + avcodec_get_name(id));
    }
    CheckChannels(path, *codec, track.channels);
    const int depth = !bits                      ? 0
                      : *bits == OutputBits::k16 ? 16
                      : *bits == OutputBits::k24 ? 24
                                                 : 32;
    return {codec, FormatOf(path, *codec, bits), depth, RateOf(*codec, track.sampleRate),
            isLossless ? 0 : BitRateOf(*codec, track, options)};
}
