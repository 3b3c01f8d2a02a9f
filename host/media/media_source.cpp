#include "host/media/media_source.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <vector>

#include "host/failure.h"
#include "host/media/media_input.h"
#include "host/media/media_mux.h"
#include "host/media/media_reader.h"
#include "host/media/media_tags.h"

namespace {

void AppendTexts(const AVDictionary* dictionary, MediaTags& tags) {
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(dictionary, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
        if (!IsOldFileTag(entry->key)) {
            tags.texts.emplace_back(entry->key, entry->value);
            std::string& key = tags.texts.back().first;
            std::transform(key.begin(), key.end(), key.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        }
    }
}

CoverPicture CoverOf(const AVStream& stream) {
    const AVDictionaryEntry* title = av_dict_get(stream.metadata, "title", nullptr, 0);
    return {MimeOf(stream), title == nullptr ? "" : title->value,
            std::max(stream.codecpar->width, 0), std::max(stream.codecpar->height, 0),
            std::string(reinterpret_cast<const char*>(stream.attached_pic.data),
                        static_cast<std::size_t>(stream.attached_pic.size))};
}

}  // namespace

std::unique_ptr<AudioSource> OpenMediaSource(const std::string& path, int track,
                                             const ReadOptions& options, const std::string& name) {
    return std::make_unique<MediaReader>(path, track, options, name);
}

MediaInfo DescribeMedia(const std::string& path) {
    MediaInput input(path, path, MediaInput::Probing::kAudio);
    MediaInfo info = {input.Context().iformat->long_name, {}};
    for (unsigned i = 0; i < input.Context().nb_streams; ++i) {
        const AVCodecParameters& stream = *input.Stream(static_cast<int>(i)).codecpar;
        const char* const type = av_get_media_type_string(stream.codec_type);
        info.streams.push_back(std::string(type == nullptr ? "other" : type) + " " +
                               avcodec_get_name(stream.codec_id));
    }
    return info;
}

int CountAudioTracks(const std::string& path) {
    const MediaInput input(path, path, MediaInput::Probing::kAudio);
    return static_cast<int>(input.AudioTracks().size());
}

MediaTags ReadMediaTags(const std::string& path) {
    MediaTags tags;
    try {
        MediaInput input(path, path, MediaInput::Probing::kAudio);
        const AVStream& track = input.Stream(input.AudioTrack(0));
        const bool fromOgg = std::string_view(input.Context().iformat->name) == "ogg";
        AppendTexts(input.Context().metadata, tags);
        AppendTexts(fromOgg ? track.metadata : nullptr, tags);
        for (int i = 0; i < static_cast<int>(input.Context().nb_streams); ++i) {
            if (IsPicture(input.Stream(i))) {
                tags.covers.push_back(CoverOf(input.Stream(i)));
            }
        }
    } catch (const Failure&) {
        return {};  // the reader reports it
    }
    return tags;
}

bool BeginsLikeMedia(const std::string& start) {
    PrepareLibav();
    std::vector<unsigned char> bytes(start.begin(), start.end());
    bytes.resize(bytes.size() + AVPROBE_PADDING_SIZE);
    const AVProbeData data = {"", bytes.data(), static_cast<int>(start.size()), nullptr};
    int score = 0;
    return av_probe_input_format3(&data, 1, &score) != nullptr && score > AVPROBE_SCORE_RETRY;
}
