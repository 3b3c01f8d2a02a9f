#include "host/media/media_source.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "host/file_info.h"
#include "host/media_files.h"

namespace {

TEST(MediaSource, AFileIsDescribedByItsContainerAndTheTypesAndCodecsOfItsStreams) {
    const MediaInfo info = DescribeMedia(TinyMediaFile("talk.mp4"));
    EXPECT_EQ(info.container, "QuickTime / MOV");
    EXPECT_EQ(std::count(info.streams.begin(), info.streams.end(), "audio aac"), 1);
    EXPECT_THROW(DescribeMedia("none.mp4"), Failure);
}

TEST(MediaSource, InfoShowsEveryFormat) {
    for (const std::string& path : TinyMediaFiles()) {
        const FileInfo info = Inspect(path, {}, false);
        EXPECT_EQ(info.problem, "") << path;
        EXPECT_NE(info.container, "") << path;
        EXPECT_TRUE(info.cleaning.has_value()) << path;
    }
}

}  // namespace
