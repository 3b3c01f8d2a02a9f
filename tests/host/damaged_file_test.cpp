// Files that end early, state no length, or begin with a tag.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>

#include "host/audio_reader.h"
#include "host/failure.h"
#include "host/ogg_pages.h"
#include "sound_files.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

struct Contents {
    std::vector<short> samples;
    std::string failure;
    std::vector<std::string> warnings;
    std::optional<std::int64_t> frames;
};

Contents ReadMono(const std::string& path, bool strict = false) {
    Contents contents;
    ReadOptions options;
    options.strict = strict;
    options.warn = [&](const std::string& line) { contents.warnings.push_back(line); };
    try {
        AudioReader reader(path, options);
        std::vector<short> block(441);
        while (const std::size_t read = reader.Read(block.data(), block.size())) {
            contents.samples.insert(contents.samples.end(), block.begin(),
                                    block.begin() + static_cast<std::ptrdiff_t>(read));
        }
        reader.Read(block.data(), block.size());  // a second end warns no more
        contents.frames = reader.Frames();
    } catch (const Failure& failure) {
        contents.failure = failure.what();
    }
    return contents;
}

class DamagedFile : public testing::Test {
protected:
    std::string Write(const std::string& name, int format, std::size_t frames = 200'000) {
        WriteSound<short>(dir.File(name), {32000, 1, format, As<short>(Bursts(frames, 32000))});
        return dir.File(name);
    }
    static void Cut(const std::string& path, std::uintmax_t bytes) {
        fs::resize_file(path, fs::file_size(path) - bytes);
    }
    static std::vector<short> First(std::vector<short> samples, std::size_t count) {
        samples.resize(count);
        return samples;
    }

    TempDir dir;
};

TEST_F(DamagedFile, AWavCutInsideASampleIsReadUpToThereWithOneWarning) {
    const std::string path = Write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 32000);
    const std::vector<short> whole = ReadMono(path).samples;
    ASSERT_EQ(whole.size(), 32000U);
    Cut(path, 32001);
    const Contents cut = ReadMono(path);
    EXPECT_EQ(cut.failure, "");
    EXPECT_EQ(cut.samples, First(whole, 15999));
    EXPECT_EQ(cut.warnings, std::vector<std::string>{path + ": is cut off after 0.50 s of 1.00 s"});
    EXPECT_EQ(ReadMono(path, true).failure, path + ": is truncated");
}

TEST_F(DamagedFile, AWavThatStatesALengthOf0IsReadToItsEnd) {
    const std::string path = Write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 32000);
    const std::vector<short> whole = ReadMono(path).samples;
    std::string bytes = ReadFile(path);
    bytes.replace(4, 4, std::string(4, '\0'));
    bytes.replace(40, 4, std::string(4, '\0'));
    WriteFile(path, bytes);
    const Contents crashed = ReadMono(path);
    EXPECT_EQ(crashed.failure, "");
    EXPECT_EQ(crashed.samples, whole);
    ASSERT_EQ(crashed.warnings.size(), 1U);
    EXPECT_NE(crashed.warnings[0].find("states no length"), std::string::npos);
    EXPECT_NE(ReadMono(path, true).failure.find("states no length"), std::string::npos);
}

TEST_F(DamagedFile, AWavWithoutAudioButWithChunksBehindContainsNone) {
    WriteFile(dir.File("a.wav"), WavHeader(0) + "LIST" + std::string("\4\0\0\0", 4) + "INFO");
    EXPECT_EQ(ReadMono(dir.File("a.wav")).failure, dir.File("a.wav") + ": contains no audio");
}

TEST_F(DamagedFile, AWavWithoutItsAudioIsRefused) {
    WriteFile(dir.File("a.wav"), WavHeader(64000).substr(0, 30));
    EXPECT_EQ(ReadMono(dir.File("a.wav")).failure, dir.File("a.wav") + ": is truncated");
    WriteFile(dir.File("b.wav"), WavHeader(64000));
    EXPECT_EQ(ReadMono(dir.File("b.wav")).failure, dir.File("b.wav") + ": contains no audio");
}

TEST_F(DamagedFile, ACutFlacIsReadUpToItsLastWholeFrameWithOneWarning) {
    const std::string path = Write("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    const std::vector<short> whole = ReadMono(path).samples;
    Cut(path, fs::file_size(path) / 3);
    const Contents cut = ReadMono(path);
    EXPECT_EQ(cut.failure, "");
    ASSERT_GT(cut.samples.size(), 100'000U);
    EXPECT_EQ(cut.samples, First(whole, cut.samples.size()));
    EXPECT_EQ(cut.frames, static_cast<std::int64_t>(cut.samples.size()));
    ASSERT_EQ(cut.warnings.size(), 1U);
    EXPECT_NE(cut.warnings[0].find(" of 6.25 s"), std::string::npos) << cut.warnings[0];
    EXPECT_NE(ReadMono(path, true).failure, "");
}

TEST_F(DamagedFile, ACutOggIsReadUpToItsLastPageWithOneWarning) {
    const std::string path = Write("a.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    const std::vector<short> whole = ReadMono(path).samples;
    Cut(path, fs::file_size(path) / 3);
    const Contents cut = ReadMono(path);
    EXPECT_EQ(cut.failure, "");
    ASSERT_GT(cut.samples.size(), 100'000U);
    EXPECT_EQ(cut.samples, First(whole, cut.samples.size()));
    EXPECT_EQ(cut.warnings.size(), 1U);
    EXPECT_NE(ReadMono(path, true).failure, "");
}

TEST_F(DamagedFile, AnOggWithAChangedByteInAnyPageIsRefusedInEitherMode) {
    const std::string path = Write("a.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    const std::string bytes = ReadFile(path);
    std::size_t pages = 0;
    for (std::size_t at = bytes.find("OggS"); at != std::string::npos;
         at = bytes.find("OggS", at + 4)) {
        std::string damaged = bytes;
        damaged[at + 40] = static_cast<char>(damaged[at + 40] ^ 1);
        WriteFile(path, damaged);
        EXPECT_EQ(ReadMono(path).failure, path + ": is truncated or damaged") << at;
        ++pages;
    }
    EXPECT_GT(pages, 5U);
}

TEST_F(DamagedFile, AFlacBeforeATagOf128BytesIsReadWholeWithoutAWarning) {
    const std::string path = Write("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    const std::vector<short> whole = ReadMono(path, true).samples;
    WriteFile(path, ReadFile(path) + "TAG" + std::string(125, 'x'));
    const Contents tagged = ReadMono(path, true);
    EXPECT_EQ(tagged.failure, "");
    EXPECT_TRUE(tagged.warnings.empty());
    EXPECT_EQ(tagged.samples, whole);
}

TEST_F(DamagedFile, AFlacBehindAnId3TagIsReadWhole) {
    const std::string path = Write("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    const std::vector<short> whole = ReadMono(path).samples;
    const std::string bytes = ReadFile(path);
    // 300 bytes in numbers of seven bits, without and with a footer.
    const std::string size("\0\0\2\x2c", 4);
    for (const std::string& tag : {std::string("ID3\4\0\0", 6) + size + std::string(300, 'x'),
                                   std::string("ID3\4\0\x10", 6) + size + std::string(310, 'x')}) {
        WriteFile(path, tag + bytes);
        const Contents tagged = ReadMono(path, true);
        EXPECT_EQ(tagged.failure, "");
        EXPECT_EQ(tagged.samples, whole);
        EXPECT_EQ(tagged.frames, 200'000);
    }
    WriteFile(path, "ID3\4");
    EXPECT_EQ(ReadMono(path).failure, path + ": not a WAV, FLAC or Ogg file");
}

/// Wraps a FLAC file into Ogg pages of up to 255 x 255 bytes.
std::string InOgg(const std::string& flac) {
    const std::string mark = std::string(
        "\x7f"
        "FLAC\1\0\0\1",
        9);
    std::string ogg;
    std::size_t at = 0;
    for (int page = 0; at < flac.size(); ++page) {
        // The first page holds the stream's header alone.
        const std::string body = page == 0 ? mark + flac.substr(0, 42) : flac.substr(at, 1000);
        at += page == 0 ? 42 : body.size();
        const char flags = page == 0 ? '\2' : at == flac.size() ? '\4' : '\0';
        std::string bytes = std::string("OggS\0", 5) + flags + std::string(8, '\0') + "id??" +
                            std::string(8, '\0') + static_cast<char>(body.size() / 255 + 1) +
                            std::string(body.size() / 255, '\xff') +
                            static_cast<char>(body.size() % 255) + body;
        const std::uint32_t checksum = OggChecksum(bytes);
        for (std::size_t i = 0; i < 4; ++i) {
            bytes[22 + i] = static_cast<char>(checksum >> (8 * i));
        }
        ogg += bytes;
    }
    return ogg;
}

TEST_F(DamagedFile, FlacInOggIsReadAsFlacAndCutItIsReadUpToThere) {
    const std::string path = Write("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    const std::vector<short> whole = ReadMono(path).samples;
    const std::string ogg = InOgg(ReadFile(path));
    WriteFile(path, ogg);
    const Contents contents = ReadMono(path, true);
    EXPECT_EQ(contents.failure, "");
    EXPECT_EQ(contents.samples, whole);
    EXPECT_EQ(contents.frames, 200'000);

    WriteFile(path, ogg.substr(0, ogg.size() / 2));
    const Contents cut = ReadMono(path);
    EXPECT_EQ(cut.failure, "");
    EXPECT_EQ(cut.samples, First(whole, cut.samples.size()));
    EXPECT_GT(cut.samples.size(), 70'000U);
    EXPECT_EQ(cut.warnings.size(), 1U);
    EXPECT_EQ(ReadMono(path, true).failure, path + ": is truncated or damaged");
}

TEST_F(DamagedFile, ADamagedMiddleIsRefusedInEitherMode) {
    const std::string path = Write("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 800'000);
    std::string bytes = ReadFile(path);
    bytes.replace(bytes.size() / 2, 2000, std::string(2000, '\x55'));
    WriteFile(path, bytes);
    EXPECT_EQ(ReadMono(path).failure, path + ": is truncated or damaged");
}

}  // namespace
