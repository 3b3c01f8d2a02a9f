#pragma once

#include <string>
#include <utility>
#include <vector>

/// A cover picture in its own format, such as JPEG.
struct CoverPicture {
    std::string mime;
    std::string description;
    int width = 0;
    int height = 0;
    std::string bytes;
};

/// What a recording says about itself, by libavformat's names: title, artist, album, date, comment, ...
struct MediaTags {
    std::vector<std::pair<std::string, std::string>> texts;
    std::vector<CoverPicture> covers;
};

/// Reads the tags of a file; none if it cannot be read, or if this build lacks AUDIO_FILTER_MEDIA.
MediaTags ReadMediaTags(const std::string& path);
