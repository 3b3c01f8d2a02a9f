#include "host/media/media_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include "host/media_files.h"
#include "host/sound_files.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

TEST(MediaReader, EveryFormatIsReadAsATenthOfASecondOrSoOfSound) {
    for (const std::string& path : TinyMediaFiles()) {
        const MediaContents contents = ReadMedia(path);
        EXPECT_EQ(contents.failure, "") << path;
        EXPECT_TRUE(contents.warnings.empty()) << path << ": " << contents.warnings.front();
        ASSERT_GT(contents.format.sampleRate, 0) << path;
        const double seconds =
            static_cast<double>(contents.samples.size()) / contents.format.sampleRate;
        EXPECT_GT(seconds, 0.04) << path;
        EXPECT_LT(seconds, 0.35) << path;
        float peak = 0.0F;
        for (const float sample : contents.samples) {
            peak = std::max(peak, std::abs(sample));
        }
        EXPECT_GT(peak, 0.05F) << path;
        EXPECT_LE(peak, 1.0F) << path;
    }
}

TEST(MediaReader, LossyCodecsAndNarrowIntegersAre16Bit) {
    EXPECT_EQ(ReadMedia(TinyMediaFile("talk.mp4")).format.samples, SampleFormat::kS16);
    EXPECT_EQ(ReadMedia(TinyMediaFile("talk.mov")).format.samples, SampleFormat::kS16);
    EXPECT_EQ(ReadMedia(TinyMediaFile("talk.mp3")).format.samples, SampleFormat::kS16);
    EXPECT_EQ(ReadMedia(TinyMediaFile("talk.webm")).format.samples, SampleFormat::kS16);
}

TEST(MediaReader, APieceOfEachFileIsReadOrRefusedInOneLine) {
    const TempDir dir;
    for (const std::string& path : TinyMediaFiles()) {
        for (const int eighths : {1, 3, 5, 7}) {
            const std::string cut = dir.File("cut" + fs::path(path).extension().string());
            fs::copy_file(path, cut, fs::copy_options::overwrite_existing);
            fs::resize_file(cut, fs::file_size(cut) * static_cast<std::uintmax_t>(eighths) / 8);
            const MediaContents contents = ReadMedia(cut);
            EXPECT_TRUE(!contents.samples.empty() || !contents.failure.empty()) << path;
            EXPECT_TRUE(contents.failure.empty() || contents.failure.rfind(cut + ": ", 0) == 0);
            EXPECT_EQ(contents.failure.find('\n'), std::string::npos) << contents.failure;
        }
    }
}

TEST(MediaReader, ShuffledBytesAreReadOrRefusedInOneLine) {
    const TempDir dir;
    std::mt19937 random(11);
    for (const std::string& path : TinyMediaFiles()) {
        std::string bytes = ReadFile(path);
        for (int changes = 0; changes < 40; ++changes) {
            std::swap(bytes[random() % bytes.size()], bytes[random() % bytes.size()]);
        }
        const std::string shuffled = dir.File("shuffled");
        WriteFile(shuffled, bytes);
        const MediaContents contents = ReadMedia(shuffled);
        EXPECT_TRUE(!contents.samples.empty() || !contents.failure.empty()) << path;
        EXPECT_EQ(contents.failure.find('\n'), std::string::npos) << contents.failure;
        for (const std::string& warning : contents.warnings) {
            EXPECT_EQ(warning.find('\n'), std::string::npos) << warning;
        }
    }
}

TEST(MediaReader, AFileThatEndsEarlyIsReadUpToThereWithAWarningAndRefusedIfStrict) {
    const TempDir dir;
    const std::string cut = dir.File("cut.mkv");
    const std::string bytes = ReadFile(TinyMediaFile("talk.mkv"));
    WriteFile(cut, bytes.substr(0, bytes.size() - 200));
    const MediaContents contents = ReadMedia(cut);
    EXPECT_EQ(contents.failure, "");
    EXPECT_FALSE(contents.samples.empty());
    ASSERT_EQ(contents.warnings.size(), 1U);
    EXPECT_NE(contents.warnings[0].find(cut + ": is cut off after 0.0"), std::string::npos);
    EXPECT_NE(ReadMedia(cut, true).failure.find("is cut off after"), std::string::npos);
}

TEST(MediaReader, MissingPacketsBecomeSilenceWithAWarning) {
    const TempDir dir;
    const std::string path = dir.File("gap.mkv");
    std::string bytes = ReadFile(TinyMediaFile("talk.mkv"));
    for (const char* header :
         {"\x82\x00\x29", "\x82\x00\x3D", "\x82\x00\x51"}) {  // track 2, time in ms
        const std::size_t block = bytes.find(std::string(header, 3)) - 2;
        ASSERT_EQ(bytes.at(block), '\xA3');
        bytes[block] = '\xEC';  // a SimpleBlock becomes Void
    }
    WriteFile(path, bytes);
    const MediaContents whole = ReadMedia(TinyMediaFile("talk.mkv"));
    const MediaContents gap = ReadMedia(path);
    EXPECT_EQ(gap.failure, "");
    EXPECT_NEAR(static_cast<double>(gap.samples.size()), static_cast<double>(whole.samples.size()),
                48.0);  // times are rounded to 1 ms
    EXPECT_EQ(
        gap.warnings,
        (std::vector<std::string>{path + ": lacks 0.06 s of its sound: silence takes its place"}));
}

TEST(MediaReader, AnythingElseIsRefusedWithAReason) {
    const TempDir dir;
    WriteFile(dir.File("text"), "this is not audio\n");
    EXPECT_EQ(ReadMedia(dir.File("text")).failure,
              dir.File("text") + ": not a WAV, FLAC or Ogg file, nor one that libavformat reads");
    EXPECT_EQ(ReadMedia(dir.File("none")).failure,
              dir.File("none") + ": cannot be read: No such file or directory");
    // A list of other files is not followed.
    WriteFile(dir.File("list.m3u8"), "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\n" +
                                         TinyMediaFile("talk.ts") + "\n#EXT-X-ENDLIST\n");
    EXPECT_NE(ReadMedia(dir.File("list.m3u8")).failure, "");
    WriteFile(dir.File("list.ffconcat"),
              "ffconcat version 1.0\nfile '" + TinyMediaFile("talk.ts") + "'\n");
    EXPECT_NE(ReadMedia(dir.File("list.ffconcat")).failure, "");
    EXPECT_EQ(ReadMedia(TinyMediaFile("talk.mp4"), false, 2).failure,
              TinyMediaFile("talk.mp4") + ": has no audio track 2, only 1");
}

}  // namespace
