#include "host/media_source.h"

#include <algorithm>
#include <vector>

#include "host/media_input.h"
#include "host/media_reader.h"

std::unique_ptr<AudioSource> OpenMediaSource(const std::string& path, int track,
                                             const ReadOptions& options, const std::string& name) {
    return std::make_unique<MediaReader>(path, track, options, name);
}

int CountAudioTracks(const std::string& path) {
    const MediaInput input(path, path, MediaInput::Probing::kAudio);
    return static_cast<int>(input.AudioTracks().size());
}

bool BeginsLikeMedia(const std::string& start) {
    PrepareLibav();
    std::vector<unsigned char> bytes(start.begin(), start.end());
    bytes.resize(bytes.size() + AVPROBE_PADDING_SIZE);
    const AVProbeData data = {"", bytes.data(), static_cast<int>(start.size()), nullptr};
    int score = 0;
    return av_probe_input_format3(&data, 1, &score) != nullptr && score > AVPROBE_SCORE_RETRY;
}
