#include "host/media/media_mux.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

extern "C" {
#include <libavutil/base64.h>
#include <libavutil/channel_layout.h>
}

#include "host/failure.h"

namespace {

constexpr int kOutputBufferBytes = 1 << 16;

/// Tags that describe the old file.
constexpr std::array<std::string_view, 5> kOldFileTags = {
    "major_brand", "minor_version", "compatible_brands", "encoder", "software"};

/// Tags that describe the old encoding of a track.
constexpr std::array<std::string_view, 5> kOldTrackTags = {"encoder", "BPS", "DURATION",
                                                           "NUMBER_OF_FRAMES", "NUMBER_OF_BYTES"};

template <std::size_t N>
void CopyDictionary(AVDictionary*& to, const AVDictionary* from,
                    const std::array<std::string_view, N>& without) {
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(from, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
        const std::string_view key = entry->key;
        const bool isOld = key.starts_with("_STATISTICS_") ||
                           std::any_of(without.begin(), without.end(), [key](std::string_view old) {
                               return key.substr(0, old.size()) == old;
                           });
        if (!isOld) {
            av_dict_set(&to, entry->key, entry->value, 0);
        }
    }
}

std::string BigEndian32(std::size_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>(value >> shift & 0xFF);
    }
    return bytes;
}

int WriteBytes(void* file, std::uint8_t* bytes, int count) {
    auto& output = *static_cast<OutputFile*>(file);
    const sf_count_t written = output.Write(reinterpret_cast<const char*>(bytes), count);
    return written == count ? count : AVERROR(output.Error());
}

/// Muxers read back what they have written, to move it.
int ReadBytes(void* file, std::uint8_t* bytes, int count) {
    const sf_count_t read =
        static_cast<OutputFile*>(file)->Read(reinterpret_cast<char*>(bytes), count);
    return read > 0 ? static_cast<int>(read) : AVERROR_EOF;
}

std::int64_t SeekBytes(void* file, std::int64_t offset, int whence) {
    auto& output = *static_cast<OutputFile*>(file);
    return whence == AVSEEK_SIZE ? output.Size() : output.Seek(offset, whence & ~AVSEEK_FORCE);
}

bool IsOgg(const MediaContainer& container) {
    const std::string_view muxer = container.muxer;
    return muxer == "ogg" || muxer == "oga" || muxer == "opus";
}

}  // namespace

bool IsPicture(const AVStream& stream) {
    return (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0 && stream.attached_pic.size > 0;
}

const char* MimeOf(const AVStream& picture) {
    return picture.codecpar->codec_id == AV_CODEC_ID_PNG   ? "image/png"
           : picture.codecpar->codec_id == AV_CODEC_ID_BMP ? "image/bmp"
           : picture.codecpar->codec_id == AV_CODEC_ID_GIF ? "image/gif"
                                                           : "image/jpeg";
}

bool IsOldFileTag(std::string_view key) {
    return key.starts_with("_STATISTICS_") ||
           std::any_of(kOldFileTags.begin(), kOldFileTags.end(),
                       [key](std::string_view old) { return key.starts_with(old); });
}

MediaMux::MediaMux(std::string path, const MediaContainer& container)
    : mPath(std::move(path)), mContainer(container) {
    PrepareLibav();
    const int error = avformat_alloc_output_context2(&mContext, nullptr, container.muxer, nullptr);
    if (error < 0) {
        Fail(error);
    }
    // The same input gives the same bytes: no random identifiers.
    mContext->flags |= AVFMT_FLAG_BITEXACT;
    mContext->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    if (IsMatroska()) {  // times stay as they are
        mContext->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;
    }
}

MediaMux::~MediaMux() {
    if (mIo == nullptr && mContext->pb != nullptr) {
        std::uint8_t* bytes = nullptr;
        avio_close_dyn_buf(mContext->pb, &bytes);
        av_free(bytes);
    }
    avformat_free_context(mContext);
}

AVStream& MediaMux::NewStream() {
    mLast.push_back(AV_NOPTS_VALUE);
    return *Allocated(avformat_new_stream(mContext, nullptr));
}

int MediaMux::AddEncoded(const AVCodecContext& codec, const AVStream* original) {
    AVStream& stream = NewStream();
    avcodec_parameters_from_context(stream.codecpar, &codec);
    stream.time_base = codec.time_base;
    if (original != nullptr) {
        stream.disposition = original->disposition;
        CopyDictionary(stream.metadata, original->metadata, kOldTrackTags);
    }
    return stream.index;
}

int MediaMux::AddCopy(const AVStream& original) {
    AVStream& stream = NewStream();
    avcodec_parameters_copy(stream.codecpar, original.codecpar);
    unsigned tag = 0;
    const AVCodecTag* const* tags = mContext->oformat->codec_tag;
    const bool keepsTag =
        tags == nullptr ||
        av_codec_get_id(tags, original.codecpar->codec_tag) == original.codecpar->codec_id ||
        av_codec_get_tag2(tags, original.codecpar->codec_id, &tag) == 0;
    stream.codecpar->codec_tag = keepsTag ? original.codecpar->codec_tag : 0;
    avformat_transfer_internal_stream_timing_info(mContext->oformat, &stream, &original,
                                                  AVFMT_TBCF_AUTO);
    stream.time_base = original.time_base;
    stream.disposition = original.disposition;
    stream.sample_aspect_ratio = original.sample_aspect_ratio;
    stream.avg_frame_rate = original.avg_frame_rate;
    stream.r_frame_rate = original.r_frame_rate;
    av_dict_copy(&stream.metadata, original.metadata, 0);
    for (int i = 0; i < original.nb_side_data; ++i) {
        const AVPacketSideData& data = original.side_data[i];
        std::copy_n(data.data, data.size,
                    Allocated(av_stream_new_side_data(&stream, data.type, data.size)));
    }
    return stream.index;
}

void MediaMux::AddPicture(const AVStream& original) {
    const std::string_view muxer = mContainer.muxer;
    if (IsOgg(mContainer)) {
        AVDictionary*& tags = mContext->streams[0]->metadata;
        av_dict_set(&tags, "METADATA_BLOCK_PICTURE", PictureTag(original).c_str(), 0);
    } else if (muxer == "matroska") {
        AVStream& stream = NewStream();
        stream.codecpar->codec_type = AVMEDIA_TYPE_ATTACHMENT;
        stream.codecpar->codec_id = original.codecpar->codec_id;
        const auto size = static_cast<std::size_t>(original.attached_pic.size);
        stream.codecpar->extradata =
            static_cast<std::uint8_t*>(Allocated(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE)));
        stream.codecpar->extradata_size = original.attached_pic.size;
        std::copy_n(original.attached_pic.data, size, stream.codecpar->extradata);
        av_dict_copy(&stream.metadata, original.metadata, 0);
        const std::string mime = MimeOf(original);
        av_dict_set(&stream.metadata, "mimetype", mime.c_str(), AV_DICT_DONT_OVERWRITE);
        const std::string name = "cover." + (mime == "image/jpeg" ? "jpg" : mime.substr(6));
        av_dict_set(&stream.metadata, "filename", name.c_str(), AV_DICT_DONT_OVERWRITE);
    } else {
        mPictures.push_back({AddCopy(original), &original.attached_pic});
    }
}

void MediaMux::CopyTags(MediaInput& input, const AVStream* track) {
    AVDictionary*& tags = IsOgg(mContainer) ? mContext->streams[0]->metadata : mContext->metadata;
    CopyDictionary(tags, input.Context().metadata, kOldFileTags);
    const bool fromOgg = std::string_view(input.Context().iformat->name) == "ogg";
    if (track != nullptr && fromOgg) {
        CopyDictionary(tags, track->metadata, kOldFileTags);
    }
    for (unsigned i = 0; i < input.Context().nb_chapters; ++i) {
        const AVChapter& old = *input.Context().chapters[i];
        auto* chapter = static_cast<AVChapter*>(Allocated(av_mallocz(sizeof(AVChapter))));
        const std::int64_t origin = Rescaled(input.Origin(), kMicroseconds, old.time_base);
        chapter->id = old.id;
        chapter->time_base = old.time_base;
        chapter->start = std::max<std::int64_t>(old.start - origin, 0);
        chapter->end = std::max<std::int64_t>(old.end - origin, chapter->start);
        av_dict_copy(&chapter->metadata, old.metadata, 0);
        av_dynarray_add(reinterpret_cast<void*>(&mContext->chapters),
                        reinterpret_cast<int*>(&mContext->nb_chapters), chapter);
        Allocated(mContext->chapters);
    }
}

void MediaMux::OpenIo(OutputFile* file) {
    if (file == nullptr) {
        const int error = avio_open_dyn_buf(&mContext->pb);
        if (error < 0) {
            Fail(error);
        }
        return;
    }
    auto* buffer = static_cast<unsigned char*>(Allocated(av_malloc(kOutputBufferBytes)));
    mIo.reset(
        avio_alloc_context(buffer, kOutputBufferBytes, 1, file, ReadBytes, WriteBytes, SeekBytes));
    mContext->pb = Allocated(mIo.get());
    mFile = file;
}

void MediaMux::WriteHeader(OutputFile* file) {
    OpenIo(file);
    AVDictionary* options = nullptr;
    av_dict_set(&options, "default_mode", "passthrough", 0);  // Matroska
    const int error = avformat_write_header(mContext, &options);
    av_dict_free(&options);
    if (error < 0) {
        Fail(error);
    }
    for (const Picture& picture : mPictures) {
        const PacketPtr packet(Allocated(av_packet_clone(picture.packet)));
        packet->stream_index = picture.stream;
        const int written = av_interleaved_write_frame(mContext, packet.get());
        if (written < 0) {
            Fail(written);
        }
    }
}

bool MediaMux::IsMatroska() const {
    const std::string_view muxer = mContainer.muxer;
    return muxer == "matroska" || muxer == "webm";
}

/// What the container adds to the times of a stream, in a time base: Matroska counts from the padding of Opus on, which
/// libavformat leaves to its callers.
std::int64_t MediaMux::DelayOf(const AVStream& stream, AVRational timeBase) const {
    constexpr AVRational kOpusFrames = {1, 48000};
    const AVCodecParameters& codec = *stream.codecpar;
    const bool isDelayed = IsMatroska() && codec.codec_id == AV_CODEC_ID_OPUS;
    return isDelayed ? Rescaled(codec.initial_padding, kOpusFrames, timeBase) : 0;
}

void MediaMux::Write(int stream, AVPacket& packet, AVRational timeBase, std::int64_t origin) {
    const AVRational own = mContext->streams[stream]->time_base;
    const std::int64_t shift =
        Rescaled(origin, kMicroseconds, timeBase) - DelayOf(*mContext->streams[stream], timeBase);
    if (packet.pts != AV_NOPTS_VALUE) {
        packet.pts -= shift;
    }
    if (packet.dts != AV_NOPTS_VALUE) {
        packet.dts -= shift;
    }
    av_packet_rescale_ts(&packet, timeBase, own);
    KeepInOrder(stream, packet);
    packet.stream_index = stream;
    packet.pos = -1;
    const int error = av_interleaved_write_frame(mContext, &packet);
    if (error < 0) {
        Fail(error);
    }
}

/// Muxers refuse packets that are out of order, as damaged files have them.
void MediaMux::KeepInOrder(int stream, AVPacket& packet) {
    std::int64_t& previous = mLast[static_cast<std::size_t>(stream)];
    if (packet.dts == AV_NOPTS_VALUE) {
        return;
    }
    if (packet.pts != AV_NOPTS_VALUE && packet.dts > packet.pts) {
        packet.dts = packet.pts;
    }
    const bool mayRepeat = (mContext->oformat->flags & AVFMT_TS_NONSTRICT) != 0;
    if (previous != AV_NOPTS_VALUE && packet.dts < previous + (mayRepeat ? 0 : 1)) {
        packet.dts = previous + (mayRepeat ? 0 : 1);
        packet.pts = packet.pts == AV_NOPTS_VALUE ? packet.pts : std::max(packet.pts, packet.dts);
    }
    previous = packet.dts;
}

void MediaMux::Finish() {
    const int error = av_write_trailer(mContext);
    avio_flush(mContext->pb);
    if (error < 0 || mContext->pb->error < 0) {
        Fail(error < 0 ? error : mContext->pb->error);
    }
}

void MediaMux::Fail(int error) const {
    if (mFile != nullptr && mFile->Error() != 0) {
        throw Failure(mPath, "cannot be written", mFile->Error());
    }
    throw Failure(
        mPath, "cannot be written as " + std::string(mContainer.name) + ": " + LibavError(error));
}

std::string PictureTag(const AVStream& picture) {
    const AVDictionaryEntry* title = av_dict_get(picture.metadata, "title", nullptr, 0);
    const std::string mime = MimeOf(picture);
    const std::string description = title == nullptr ? "" : title->value;
    const auto size = static_cast<std::size_t>(picture.attached_pic.size);
    constexpr std::size_t kFrontCover = 3;
    const std::string block =
        BigEndian32(kFrontCover) + BigEndian32(mime.size()) + mime +
        BigEndian32(description.size()) + description +
        BigEndian32(static_cast<std::size_t>(std::max(picture.codecpar->width, 0))) +
        BigEndian32(static_cast<std::size_t>(std::max(picture.codecpar->height, 0))) +
        BigEndian32(24) + BigEndian32(0) + BigEndian32(size) +
        std::string(reinterpret_cast<const char*>(picture.attached_pic.data), size);
    std::string text(AV_BASE64_SIZE(block.size()), '\0');
    Allocated(av_base64_encode(text.data(), static_cast<int>(text.size()),
                               reinterpret_cast<const std::uint8_t*>(block.data()),
                               static_cast<int>(block.size())));
    text.resize(text.find('\0'));
    return text;
}
