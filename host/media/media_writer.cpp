#include "host/media/media_writer.h"

#include <algorithm>
#include <string_view>
#include <utility>

extern "C" {
#include <libavutil/channel_layout.h>
}

#include "host/failure.h"
#include "host/interrupt.h"
#include "host/media/media_reader.h"

namespace {

constexpr double kBitRateSeconds = 60.0;

/// Measured where the container states none.
std::int64_t MeasureBitRate(const std::string& path, int index) {
    MediaInput input(path, path, MediaInput::Probing::kAudio);
    const AVStream& stream = input.Stream(index);
    const PacketPtr packet(Allocated(av_packet_alloc()));
    double bytes = 0.0;
    double seconds = 0.0;
    while (seconds < kBitRateSeconds && input.ReadPacket(*packet) == 0) {
        if (packet->stream_index == index) {
            bytes += packet->size;
            seconds += static_cast<double>(packet->duration) * av_q2d(stream.time_base);
        }
        av_packet_unref(packet.get());
    }
    return seconds > 0.0 ? static_cast<std::int64_t>(8.0 * bytes / seconds) : 0;
}

const char* TypeName(AVMediaType type) {
    switch (type) {
        case AVMEDIA_TYPE_VIDEO: return "video";
        case AVMEDIA_TYPE_AUDIO: return "audio";
        case AVMEDIA_TYPE_SUBTITLE: return "subtitles";
        case AVMEDIA_TYPE_ATTACHMENT: return "attachments";
        default: return "data";
    }
}

std::string NameOf(const AVStream& stream) {
    const std::string type = TypeName(stream.codecpar->codec_type);
    const AVCodecID codec = stream.codecpar->codec_id;
    return codec == AV_CODEC_ID_NONE ? type : avcodec_get_name(codec) + (" " + type);
}

/// Whether muxers make a stream from the chapters or the tags: the chapter titles and time codes of MP4.
bool IsWrittenAnew(const AVStream& stream, const AVFormatContext& file) {
    const bool isChapters = stream.codecpar->codec_id == AV_CODEC_ID_BIN_DATA &&
                            stream.codecpar->codec_tag == MKTAG('t', 'e', 'x', 't') &&
                            file.nb_chapters > 0;
    return isChapters || stream.codecpar->codec_tag == MKTAG('t', 'm', 'c', 'd');
}

bool HoldsPictures(const MediaContainer& container) {
    const std::string_view muxer = container.muxer;
    return muxer != "webm" && muxer != "adts" && muxer != "asf" && muxer != "mov";
}

/// Whether the container tells players to skip the encoder's padding. MP4 does by an edit list, which has no place for it
/// where the track starts late.
bool StatesPadding(const MediaContainer& container, AVCodecID codec, std::int64_t start) {
    const std::string_view muxer = container.muxer;
    const bool mp4 = muxer == "mp4" || muxer == "mov" || muxer == "ipod";
    return (mp4 && start <= 0) || codec == AV_CODEC_ID_OPUS || muxer == "mp3";
}

}  // namespace

/// The sink of one track.
class MediaWriter::TrackSink : public AudioSink {
public:
    TrackSink(MediaWriter& writer, TrackEncoder& encoder, const AudioFormat& format)
        : mWriter(writer),
          mEncoder(encoder),
          mChannels(static_cast<std::size_t>(format.channels)) {}

    void Write(const short* samples, std::size_t frames) override {
        std::vector<float> floats(frames * mChannels);
        std::transform(samples, samples + floats.size(), floats.begin(),
                       [](short sample) { return ToFloat(sample); });
        Write(floats.data(), frames);
    }
    void Write(const float* samples, std::size_t frames) override {
        mEncoder.Push(samples, frames);
    }
    void Commit() override {
        mEncoder.Finish();
        mWriter.CommitTrack();
    }

private:
    MediaWriter& mWriter;
    TrackEncoder& mEncoder;
    std::size_t mChannels;
};

MediaWriter::MediaWriter(const MediaOutputJob& job)
    : mJob(job), mContainer(*MediaContainerOf(job.path)) {
    PartialFile::CheckPath(job.path, job.replace);
    if (!job.input.empty()) {
        mInput = std::make_unique<MediaInput>(job.input, job.input, MediaInput::Probing::kAll);
        mCleaned = job.track == kAllTracks ? mInput->AudioTracks()
                                           : std::vector<int>{mInput->AudioTrack(job.track)};
        PlanCopies();
    }
    if (mCleaned.size() > 1 && !mContainer.holdsTracks) {
        throw Failure(job.path, std::string(mContainer.name) + " holds one audio track, not " +
                                    std::to_string(mCleaned.size()));
    }
}

MediaWriter::~MediaWriter() = default;

bool MediaWriter::IsCleaned(int index) const {
    return std::find(mCleaned.begin(), mCleaned.end(), index) != mCleaned.end();
}

bool MediaWriter::IsCopied(int index) const {
    return std::find(mCopied.begin(), mCopied.end(), index) != mCopied.end();
}

void MediaWriter::PlanCopies() {
    for (int i = 0; i < static_cast<int>(mInput->Context().nb_streams); ++i) {
        if (!IsCleaned(i)) {
            PlanCopy(i);
        }
    }
}

/// Decides about a stream that is not cleaned. What an audio file has no place for is dropped with a note: it is written
/// to take the sound out of a video.
void MediaWriter::PlanCopy(int index) {
    const AVStream& stream = mInput->Stream(index);
    const AVMediaType type = stream.codecpar->codec_type;
    if (IsPicture(stream)) {
        if (HoldsPictures(mContainer)) {
            mPictures.push_back(index);
        } else {
            mNotes.emplace_back("the cover picture is not kept");
        }
        return;
    }
    if (IsWrittenAnew(stream, mInput->Context())) {
        return;
    }
    const bool matroska = std::string_view(mContainer.muxer) == "matroska";
    const bool fits =
        type == AVMEDIA_TYPE_ATTACHMENT ? matroska : CanHold(mContainer, stream.codecpar->codec_id);
    const bool hasPlace =
        mContainer.holdsVideo || (type == AVMEDIA_TYPE_AUDIO && mContainer.holdsTracks);
    const bool isData = type == AVMEDIA_TYPE_DATA || type == AVMEDIA_TYPE_UNKNOWN;
    if (fits && hasPlace) {
        mCopied.push_back(index);
    } else if (!mContainer.holdsVideo || isData) {
        mNotes.push_back("stream " + std::to_string(index) + " (" + NameOf(stream) +
                         ") is not kept");
    } else {
        throw Failure(mJob.path, std::string(mContainer.name) + " cannot hold the " +
                                     NameOf(stream) + " of " + mJob.input +
                                     ": choose another extension, such as .mkv");
    }
}

TrackFacts MediaWriter::FactsOf(int index, const AudioFormat& format) const {
    TrackFacts facts = {AV_CODEC_ID_NONE, format.sampleRate, format.channels,
                        format.samples == SampleFormat::kFloat, 0};
    if (mInput == nullptr) {
        return facts;
    }
    const AVCodecParameters& parameters = *mInput->Stream(index).codecpar;
    facts.codec = parameters.codec_id;
    const AVCodecDescriptor* codec = avcodec_descriptor_get(facts.codec);
    const bool isLossy = codec != nullptr && (codec->props & AV_CODEC_PROP_LOSSY) != 0;
    if (isLossy) {
        facts.bitRate =
            parameters.bit_rate > 0 ? parameters.bit_rate : MeasureBitRate(mJob.input, index);
    }
    return facts;
}

/// When the first frame of a track plays, in frames of its format.
std::int64_t MediaWriter::StartOf(int track, const AudioFormat& format) const {
    if (mInput == nullptr) {
        return 0;
    }
    const MediaReader reader(mJob.input, track, {}, mJob.input);
    return Rescaled(reader.Start(), {1, reader.Format().sampleRate}, {1, format.sampleRate});
}

TrackPlan MediaWriter::PlanOf(int index, int track, const AudioFormat& format,
                              AVCodecID codec) const {
    const AVOutputFormat* muxer = av_guess_format(mContainer.muxer, nullptr, nullptr);
    TrackPlan plan = {format.sampleRate,
                      {},
                      StartOf(track, format),
                      (muxer->flags & AVFMT_GLOBALHEADER) != 0,
                      false};
    plan.statesPadding = StatesPadding(mContainer, codec, plan.start);
    av_channel_layout_default(&plan.layout, format.channels);
    if (mInput != nullptr &&
        mInput->Stream(index).codecpar->ch_layout.nb_channels == format.channels) {
        av_channel_layout_copy(&plan.layout, &mInput->Stream(index).codecpar->ch_layout);
    }
    return plan;
}

std::unique_ptr<AudioSink> MediaWriter::AddTrack(int track, const AudioFormat& format) {
    const int index = mInput == nullptr ? -1 : mInput->AudioTrack(track);
    const EncoderChoice choice =
        ChooseEncoder(mJob.path, mContainer, FactsOf(index, format), mJob.options);
    mTracks.push_back(
        {index, std::make_unique<TrackEncoder>(mJob.path, choice,
                                               PlanOf(index, track, format, choice.codec->id))});
    if (!mFile) {
        CheckHeader();
        mFile.emplace(mJob.path, mJob.replace);
    }
    return std::make_unique<TrackSink>(*this, *mTracks.back().encoder, format);
}

/// The streams in the order of the input: cleaned tracks as far as they are known, and copies.
std::unique_ptr<MediaMux> MediaWriter::MakeMux() const {
    auto mux = std::make_unique<MediaMux>(mJob.path, mContainer);
    if (mInput == nullptr) {
        mux->AddEncoded(mTracks.front().encoder->Codec(), nullptr);
        return mux;
    }
    for (int i = 0; i < static_cast<int>(mInput->Context().nb_streams); ++i) {
        const auto track = std::find_if(mTracks.begin(), mTracks.end(),
                                        [i](const Track& t) { return t.index == i; });
        if (track != mTracks.end()) {
            mux->AddEncoded(track->encoder->Codec(), &mInput->Stream(i));
        } else if (IsCopied(i)) {
            mux->AddCopy(mInput->Stream(i));
        }
    }
    mux->CopyTags(*mInput, &mInput->Stream(mCleaned.front()));
    for (const int picture : mPictures) {
        mux->AddPicture(mInput->Stream(picture));
    }
    return mux;
}

void MediaWriter::CheckHeader() const {
    MakeMux()->WriteHeader(nullptr);
}

void MediaWriter::CommitTrack() {
    ++mCommitted;
    if (mCommitted >= std::max<std::size_t>(mCleaned.size(), 1)) {
        Mux();
    }
}

/// The index of an input's stream in the output, as MakeMux adds them.
int MediaWriter::OutputOf(int index) const {
    int output = 0;
    for (int i = 0; i < index; ++i) {
        output += IsCopied(i) || IsCleaned(i) ? 1 : 0;
    }
    return output;
}

/// The next packet of the streams that are copied.
RoutedPacket MediaWriter::ReadCopied() {
    while (true) {
        PacketPtr packet(Allocated(av_packet_alloc()));
        if (mInput->ReadPacket(*packet) != 0) {  // the reader has reported damage
            return {};
        }
        const int index = packet->stream_index;
        if (IsCopied(index)) {
            return {std::move(packet), OutputOf(index), mInput->Stream(index).time_base,
                    mInput->Origin()};
        }
    }
}

void MediaWriter::Mux() {
    PacketMerge packets;
    for (const Track& track : mTracks) {
        TrackEncoder& encoder = *track.encoder;
        encoder.Packets().Rewind();
        packets.Add([&encoder, stream = OutputOf(track.index)] {
            return RoutedPacket{encoder.Packets().Read(), stream, encoder.Codec().time_base, 0};
        });
    }
    if (!mCopied.empty()) {
        for (int i = 0; i < static_cast<int>(mInput->Context().nb_streams); ++i) {
            mInput->Stream(i).discard = IsCopied(i) ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
        }
        packets.Add([this] { return ReadCopied(); });
    }
    const std::unique_ptr<MediaMux> mux = MakeMux();
    mux->WriteHeader(&mFile->File());
    while (true) {
        const RoutedPacket next = packets.Next();
        if (next.packet == nullptr) {
            break;
        }
        if (Interrupted()) {
            throw Failure("interrupted");
        }
        mux->Write(next.stream, *next.packet, next.timeBase, next.origin);
    }
    mux->Finish();
    mFile->Commit();
}

bool IsMediaOutput(const std::string& path) {
    return MediaContainerOf(path) != nullptr;
}

std::shared_ptr<MediaOutput> OpenMediaOutput(const MediaOutputJob& job) {
    return std::make_shared<MediaWriter>(job);
}
