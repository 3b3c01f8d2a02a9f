#include "host/media/media_input.h"

#include <cerrno>
#include <optional>
#include <string_view>
#include <utility>

#include "host/channels.h"
#include "host/container.h"
#include "host/failure.h"
#include "host/file_bytes.h"
#include "host/interrupt.h"
#include "host/media/matroska_size.h"

namespace {

constexpr int kInputBufferBytes = 1 << 15;
constexpr std::int64_t kProbeBytes = 5 << 20;
constexpr std::int64_t kProbeTime = 5 * std::int64_t{AV_TIME_BASE};
constexpr int kMostStreams = 256;
constexpr int kMostProbedPackets = 2500;
constexpr std::chrono::seconds kLongestCall{30};

/// None of them opens another file, as playlists do.
constexpr const char* kDemuxers =
    "aac,ac3,aiff,amr,amrnb,amrwb,ape,asf,asf_o,au,avi,caf,dts,eac3,flac,flv,loas,matroska,mov,mp3,"
    "mpc,mpc8,mpeg,"
    "mpegts,ogg,tta,voc,w64,wav,wv";

constexpr const char* kAudioDecoders =
    "aac,aac_latm,ac3,adpcm_ima_qt,adpcm_ima_wav,adpcm_ms,adpcm_swf,adpcm_yamaha,alac,amrnb,amrwb,"
    "ape,dca,eac3,flac,"
    "gsm,gsm_ms,mlp,mp1,mp1float,mp2,mp2float,mp3,mp3float,mpc7,mpc8,nellymoser,opus,pcm_alaw,pcm_"
    "bluray,pcm_dvd,"
    "pcm_f32be,pcm_f32le,pcm_f64be,pcm_f64le,pcm_mulaw,pcm_s16be,pcm_s16le,pcm_s24be,pcm_s24le,pcm_"
    "s32be,pcm_s32le,"
    "pcm_s8,pcm_u8,qdm2,speex,truehd,tta,vorbis,wavpack,wmalossless,wmapro,wmav1,wmav2,wmavoice";

}  // namespace

MediaInput::MediaInput(const std::string& path, std::string name, Probing probing)
    : mName(std::move(name)), mFile(path, std::ios::binary) {
    PrepareLibav();
    if (!mFile) {
        throw Failure(mName, "cannot be read", errno);
    }
    mSize = static_cast<std::int64_t>(SizeOf(mFile));
    const std::optional<std::uint64_t> stated = StatedMatroskaSize(mFile);
    mIsCut = stated && *stated > static_cast<std::uint64_t>(mSize);
    mFile.clear();
    mFile.seekg(0);
    GiveTime();
    auto* buffer = static_cast<unsigned char*>(Allocated(av_malloc(kInputBufferBytes)));
    mIo.reset(avio_alloc_context(buffer, kInputBufferBytes, 0, this, Read, nullptr, Seek));
    mContext = Allocated(avformat_alloc_context());
    mContext->pb = mIo.get();
    mContext->probesize = kProbeBytes;
    mContext->max_analyze_duration = kProbeTime;
    mContext->max_streams = kMostStreams;
    mContext->max_probe_packets = kMostProbedPackets;
    mContext->format_whitelist = av_strdup(kDemuxers);
    if (probing == Probing::kAudio) {
        mContext->codec_whitelist = av_strdup(kAudioDecoders);
    }
    mContext->strict_std_compliance = FF_COMPLIANCE_NORMAL;
    if (probing == Probing::kAll) {
        mContext->flags |=
            AVFMT_FLAG_GENPTS;  // AVI and MPEG-PS state no order for reordered frames
    }
    // Frees the context itself when it fails.
    const int opened = avformat_open_input(&mContext, "", nullptr, nullptr);
    if (opened < 0) {
        FailToOpen(opened);
    }
    const int found = avformat_find_stream_info(mContext, nullptr);
    LibavError(0);
    if (found < 0 && mContext->nb_streams == 0) {
        avformat_close_input(&mContext);
        Fail("contains no audio");
    }
}

MediaInput::~MediaInput() {
    avformat_close_input(&mContext);
}

std::vector<int> MediaInput::AudioTracks() const {
    std::vector<int> tracks;
    for (int i = 0; i < static_cast<int>(mContext->nb_streams); ++i) {
        if (Stream(i).codecpar->codec_type == AVMEDIA_TYPE_AUDIO) {
            tracks.push_back(i);
        }
    }
    return tracks;
}

int MediaInput::AudioTrack(int track) const {
    const std::vector<int> tracks = AudioTracks();
    if (tracks.empty()) {
        Fail("contains no audio");
    }
    if (track > static_cast<int>(tracks.size())) {
        Fail("has no audio track " + std::to_string(track) + ", only " +
             std::to_string(tracks.size()));
    }
    if (track > 0) {
        return tracks[static_cast<std::size_t>(track) - 1];
    }
    for (const int index : tracks) {
        if ((Stream(index).disposition & AV_DISPOSITION_DEFAULT) != 0) {
            return index;
        }
    }
    return tracks.front();
}

int MediaInput::ReadPacket(AVPacket& packet) {
    GiveTime();
    return av_read_frame(mContext, &packet);
}

bool MediaInput::IsAbsolute() const {
    const std::string_view format = mContext->iformat->name;
    return format.starts_with("mov") || format.starts_with("matroska");
}

bool MediaInput::HasVideo() const {
    for (int i = 0; i < static_cast<int>(mContext->nb_streams); ++i) {
        if (Stream(i).codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
            (Stream(i).disposition & AV_DISPOSITION_ATTACHED_PIC) == 0) {
            return true;
        }
    }
    return false;
}

std::int64_t MediaInput::Origin() const {
    return IsAbsolute() || mContext->start_time == AV_NOPTS_VALUE ? 0 : mContext->start_time;
}

void MediaInput::Fail(const std::string& reason) const {
    throw Failure(mName, reason);
}

void MediaInput::FailToOpen(int error) const {
    const std::string meaning = LibavError(error);
    if (meaning.find("moov atom not found") != std::string::npos) {
        Fail("is cut off: its index, at the end, is missing");
    }
    const bool isUnknown = error == AVERROR_INVALIDDATA || error == AVERROR(EINVAL);
    Fail(isUnknown ? std::string(kNoSound) + ", nor one that libavformat reads"
                   : "cannot be read: " + meaning);
}

void MediaInput::GiveTime() {
    mDeadline = std::chrono::steady_clock::now() + kLongestCall;
}

int MediaInput::Read(void* self, std::uint8_t* bytes, int count) {
    auto& input = *static_cast<MediaInput*>(self);
    if (Interrupted()) {
        return AVERROR_EXIT;
    }
    if (std::chrono::steady_clock::now() > input.mDeadline) {
        return AVERROR(ETIMEDOUT);
    }
    input.mFile.read(reinterpret_cast<char*>(bytes), count);
    const auto read = static_cast<int>(input.mFile.gcount());
    return read > 0 ? read : AVERROR_EOF;
}

std::int64_t MediaInput::Seek(void* self, std::int64_t offset, int whence) {
    auto& input = *static_cast<MediaInput*>(self);
    if (whence == AVSEEK_SIZE) {
        return input.mSize;
    }
    const bool isAbsolute = (whence & ~AVSEEK_FORCE) == SEEK_SET;  // all that libavformat uses
    if (!isAbsolute || offset < 0) {
        return AVERROR(EINVAL);
    }
    input.mFile.clear();
    input.mFile.seekg(offset);
    return offset;
}
