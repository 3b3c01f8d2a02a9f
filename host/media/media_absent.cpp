// In place of the media files, in builds without AUDIO_FILTER_MEDIA.
#include "host/container.h"
#include "host/failure.h"
#include "host/media/media_output.h"
#include "host/media/media_source.h"
#include "host/media/media_tags.h"

std::unique_ptr<AudioSource> OpenMediaSource(const std::string& /*path*/, int /*track*/,
                                             const ReadOptions& /*options*/,
                                             const std::string& name) {
    throw Failure(name, std::string(kNoSound) +
                            "; this build lacks AUDIO_FILTER_MEDIA, which reads other formats");
}

MediaInfo DescribeMedia(const std::string& /*path*/) {
    return {};
}

int CountAudioTracks(const std::string& /*path*/) {
    return 1;
}

bool BeginsLikeMedia(const std::string& /*start*/) {
    return false;
}

MediaTags ReadMediaTags(const std::string& /*path*/) {
    return {};
}

bool IsMediaOutput(const std::string& /*path*/) {
    return false;
}

std::shared_ptr<MediaOutput> OpenMediaOutput(const MediaOutputJob& job) {
    throw Failure(job.path, "this build lacks AUDIO_FILTER_MEDIA, which writes such files");
}
