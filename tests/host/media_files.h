#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/failure.h"
#include "host/media/media_reader.h"

/// A tiny media file of each format, shared with the fuzz target.
inline std::vector<std::string> TinyMediaFiles() {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(MEDIA_CORPUS)) {
        if (entry.path().filename().string().find('.') != std::string::npos) {
            files.push_back(entry.path().string());
        }
    }
    EXPECT_GE(files.size(), 20U);
    return files;
}

inline std::string TinyMediaFile(const std::string& name) {
    return MEDIA_CORPUS "/" + name;
}

/// What MediaReader makes of a file.
struct MediaContents {
    AudioFormat format = {};
    std::int64_t start = 0;
    std::vector<float> samples;
    std::string failure;
    std::vector<std::string> warnings;
};

inline MediaContents ReadMedia(const std::string& path, bool strict = false, int track = 0) {
    MediaContents contents;
    ReadOptions options;
    options.strict = strict;
    options.warn = [&](const std::string& line) { contents.warnings.push_back(line); };
    try {
        MediaReader reader(path, track, options, path);
        contents.format = reader.Format();
        contents.start = reader.Start();
        std::vector<float> block(4410 * static_cast<std::size_t>(contents.format.channels));
        while (const std::size_t read = reader.Read(block.data(), 4410)) {
            const auto count = read * static_cast<std::size_t>(contents.format.channels);
            contents.samples.insert(contents.samples.end(), block.begin(),
                                    block.begin() + static_cast<std::ptrdiff_t>(count));
        }
    } catch (const Failure& failure) {
        contents.failure = failure.what();
    }
    return contents;
}
