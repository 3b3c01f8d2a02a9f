// Media files out, by the command line.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "host/command_line_fixture.h"
#include "host/media_files.h"

namespace {

/// The packets of each stream, as text and with their times in ms; streams in order.
std::vector<std::string> Packets(const std::string& path) {
    MediaInput input(path, path, MediaInput::Probing::kAll);
    std::vector<std::string> streams(input.Context().nb_streams);
    const PacketPtr packet(Allocated(av_packet_alloc()));
    while (input.ReadPacket(*packet) == 0) {
        const AVRational timeBase = input.Stream(packet->stream_index).time_base;
        streams[static_cast<std::size_t>(packet->stream_index)] +=
            std::to_string(Rescaled(packet->pts, timeBase, {1, 1000})) + ":" +
            std::string(reinterpret_cast<const char*>(packet->data),
                        static_cast<std::size_t>(packet->size)) +
            "\n";
        av_packet_unref(packet.get());
    }
    return streams;
}

std::string TagOf(const AVDictionary* tags, const char* key) {
    const AVDictionaryEntry* entry = av_dict_get(tags, key, nullptr, 0);
    return entry == nullptr ? "" : entry->value;
}

class MediaWriterTest : public CommandLineTest {
protected:
    /// Runs a command line that must succeed.
    static std::string Clean(Words words) {
        words.insert(words.begin(), "clean");
        words.emplace_back("--quiet");
        const Outcome outcome = RunHost(words);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return outcome.err;
    }
    static std::string Refusal(Words words) {
        words.insert(words.begin(), "clean");
        const Outcome outcome = RunHost(words);
        EXPECT_EQ(outcome.status, 1);
        return outcome.err;
    }
    std::string Bursts48k(int channels, double seconds = 0.6) {
        return Record<short>("in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 48000, channels, seconds);
    }
};

TEST_F(MediaWriterTest, ARecordingInEachContainerHasLagZeroAndItsLength) {
    const std::string in = Bursts48k(1);
    const std::vector<float> original = ReadSound<float>(in).samples;
    for (const char* extension : {"mp4", "mov", "m4a", "mkv", "mka", "webm", "mp3", "opus", "ogg",
                                  "wma", "aac", "aiff", "caf", "flac"}) {
        const std::string out = File(std::string("out.") + extension);
        Clean({in, "-o", out, "--denoise", "off"});
        const MediaContents contents = ReadMedia(out);
        EXPECT_EQ(contents.failure, "") << extension;
        EXPECT_TRUE(contents.warnings.empty()) << extension;
        const bool padded = std::string(extension) == "wma" || std::string(extension) == "aac";
        ASSERT_GE(contents.samples.size() + (padded ? 2048U : 0U), original.size()) << extension;
        EXPECT_LE(contents.samples.size(), original.size() + 2048) << extension;
        EXPECT_EQ(contents.start, 0) << extension;
        std::vector<float> decoded = contents.samples;
        decoded.resize(original.size());
        EXPECT_LE(std::abs(Lag(original, decoded, 40)), 1) << extension;
    }
}

TEST_F(MediaWriterTest, LosslessContainersKeepEverySampleOfEightChannels) {
    const std::string in = Record<short>("in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 8, 0.2);
    for (const char* name : {"out.flac", "out.wav", "out.caf", "out.mkv"}) {
        Clean({in, "-o", File(name), "--denoise", "off", "--gain", "off"});
        const MediaContents contents = ReadMedia(File(name));
        EXPECT_EQ(contents.format.channels, 8) << name;
        EXPECT_EQ(contents.samples, ReadSound<float>(in).samples) << name;
    }
}

TEST_F(MediaWriterTest, OpusTakesSixChannelsWithSideLoudspeakers) {
    const std::string in =
        Record<short>("in.wav", SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 48000, 6, 0.2);
    std::string bytes = ReadFile(in);
    bytes.replace(40, 4, std::string("\x0F\x06\0\0", 4));  // the loudspeakers
    WriteFile(in, bytes);
    Clean({in, "-o", File("out.opus")});
    EXPECT_EQ(ReadMedia(File("out.opus")).format.channels, 6);
}

TEST_F(MediaWriterTest, VideoIsCopiedWithItsTimes) {
    for (const char* name : {"talk.mp4", "talk.mov", "talk.mkv", "talk.webm"}) {
        const std::string out = File(std::string("out") + (name + 4));
        Clean({TinyMediaFile(name), "-o", out});
        const std::vector<std::string> before = Packets(TinyMediaFile(name));
        const std::vector<std::string> after = Packets(out);
        ASSERT_EQ(before.size(), 2U) << name;
        ASSERT_EQ(after.size(), 2U) << name;
        EXPECT_EQ(before[0], after[0]) << name;
        EXPECT_NE(before[1], after[1]) << name;
        EXPECT_EQ(ReadMedia(TinyMediaFile(name)).samples.size(), ReadMedia(out).samples.size())
            << name;
    }
}

TEST_F(MediaWriterTest, ReorderedFramesOfAviAreCopiedInTheirOrder) {
    for (const char* extension : {"mkv", "mp4", "mov"}) {
        const std::string out = File(std::string("out.") + extension);
        Clean({TinyMediaFile("talk.avi"), "-o", out});
        MediaInput input(out, out, MediaInput::Probing::kAll);
        std::vector<std::int64_t> times;
        const PacketPtr packet(Allocated(av_packet_alloc()));
        while (input.ReadPacket(*packet) == 0) {
            if (packet->stream_index == 0) {
                times.push_back(Rescaled(packet->pts, input.Stream(0).time_base, {1, 1000}));
            }
            av_packet_unref(packet.get());
        }
        EXPECT_EQ(times, (std::vector<std::int64_t>{80, 200, 120, 160, 240})) << extension;
    }
}

TEST_F(MediaWriterTest, OtherTracksSubtitlesAttachmentsAndChaptersAreCopied) {
    const std::string in = TinyMediaFile("tracks.mkv");
    const std::vector<std::string> before = Packets(in);
    for (const auto& [track, cleaned] :
         std::map<std::string, std::vector<std::size_t>>{{"1", {1}}, {"2", {2}}, {"all", {1, 2}}}) {
        const std::string out = File("out.mkv");
        Clean({in, "-o", out, "--track", track});
        const std::vector<std::string> after = Packets(out);
        ASSERT_EQ(before.size(), after.size());
        for (std::size_t i = 0; i < before.size(); ++i) {
            const bool isCleaned = std::find(cleaned.begin(), cleaned.end(), i) != cleaned.end();
            EXPECT_EQ(before[i] != after[i], isCleaned) << "track " << track << ", stream " << i;
        }
        MediaInput input(out, out, MediaInput::Probing::kAll);
        EXPECT_EQ(input.Context().nb_chapters, 1U);
        EXPECT_EQ(TagOf(input.Context().metadata, "title"), "Two tracks");
        EXPECT_EQ(TagOf(input.Stream(1).metadata, "language"), "eng");
        EXPECT_EQ(TagOf(input.Stream(2).metadata, "language"), "deu");
        const AVCodecParameters& attachment = *input.Stream(4).codecpar;
        EXPECT_EQ(attachment.codec_type, AVMEDIA_TYPE_ATTACHMENT);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(attachment.extradata),
                              static_cast<std::size_t>(attachment.extradata_size)),
                  "a picture, or so");
    }
}

TEST_F(MediaWriterTest, SeveralTracksDoNotReplaceAFileThatIsToBeKept) {
    WriteFile(File("kept.mkv"), "to be kept");
    const Outcome outcome = RunHost({"clean", TinyMediaFile("tracks.mkv"), "--track", "all",
                                     "--no-clobber", "-o", File("kept.mkv")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("kept.mkv: exists"), std::string::npos) << outcome.err;
    EXPECT_EQ(ReadFile(File("kept.mkv")), "to be kept");
}

TEST_F(MediaWriterTest, WhatAContainerCannotHoldIsRefusedInWordsAndNothingIsWritten) {
    const std::string in = TinyMediaFile("talk.mp4");
    EXPECT_NE(Refusal({in, "-o", File("out.webm")}).find("WebM cannot hold the mpeg4 video of"),
              std::string::npos);
    const std::string tracks = TinyMediaFile("tracks.mkv");
    EXPECT_NE(Refusal({tracks, "-o", File("out.mp4")}).find("MP4 cannot hold the "),
              std::string::npos);
    EXPECT_NE(Refusal({tracks, "--track", "all", "-o", File("out.mp3")})
                  .find("MP3 holds one audio track, not 2"),
              std::string::npos);
    EXPECT_NE(Refusal({tracks, "--track", "all", "-o", File("out.wav")})
                  .find("holds one audio track: choose --track N"),
              std::string::npos);
    EXPECT_NE(Refusal({in, "-o", File("out.amr")}).find("AMR can be read but not written"),
              std::string::npos);
    EXPECT_TRUE(dir.Names().empty());
}

TEST_F(MediaWriterTest, AnAudioFileTakesTheSoundOutOfAVideoAndSaysWhatIsNotKept) {
    const Outcome outcome =
        RunHost({"clean", TinyMediaFile("talk.mp4"), "-o", File("out.mp3"), "--json"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("stream 0 (mpeg4 video) is not kept"), std::string::npos);
    EXPECT_EQ(Packets(File("out.mp3")).size(), 1U);
}

TEST_F(MediaWriterTest, TagsSurviveEveryChangeOfContainer) {
    Clean({TinyMediaFile("tracks.mkv"), "-o", File("0.flac")});
    int step = 0;
    std::string last = File("0.flac");
    for (const char* extension : {"mp3", "m4a", "ogg", "wav", "opus", "mka", "flac"}) {
        const std::string next = File(std::to_string(++step) + "." + extension);
        Clean({last, "-o", next});
        MediaInput input(next, next, MediaInput::Probing::kAudio);
        const AVDictionary* tags = input.Context().metadata;
        const bool isOgg = TagOf(tags, "title").empty();
        tags = isOgg ? input.Stream(0).metadata : tags;
        EXPECT_EQ(TagOf(tags, "title"), "Two tracks") << extension;
        EXPECT_EQ(TagOf(tags, "artist"), "Anna") << extension;
        last = next;
    }
}

TEST_F(MediaWriterTest, TheSameInputGivesTheSameBytes) {
    Clean({TinyMediaFile("tracks.mkv"), "-o", File("a.mkv")});
    Clean({TinyMediaFile("tracks.mkv"), "-o", File("b.mkv")});
    EXPECT_EQ(ReadFile(File("a.mkv")), ReadFile(File("b.mkv")));
}

TEST_F(MediaWriterTest, AnOutputThatExistsIsReplacedWholeOrStays) {
    WriteFile(File("out.mp4"), "precious");
    Refusal({TinyMediaFile("tracks.mkv"), "-o", File("out.mp4")});
    EXPECT_EQ(ReadFile(File("out.mp4")), "precious");
    Clean({TinyMediaFile("talk.mp4"), "-o", File("out.mp4")});
    EXPECT_EQ(Packets(File("out.mp4")).size(), 2U);
    EXPECT_EQ(dir.Names().size(), 1U);
    WriteFile(File("out.mkv"), "precious");
    for (const char* track : {"1", "all"}) {
        Refusal(
            {TinyMediaFile("tracks.mkv"), "-o", File("out.mkv"), "--track", track, "--no-clobber"});
        EXPECT_EQ(ReadFile(File("out.mkv")), "precious") << track;
    }
}

TEST_F(MediaWriterTest, CodecBitRateAndBitsAreThoseOfTheOptions) {
    const std::string in = Bursts48k(2);
    Clean({in, "-o", File("out.mka"), "--codec", "flac", "--bits", "24"});
    EXPECT_EQ(ReadMedia(File("out.mka")).format.samples, SampleFormat::kFloat);
    Clean({in, "-o", File("out.wav"), "--bits", "float"});
    EXPECT_EQ(ReadSound<float>(File("out.wav")).format, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    Clean({in, "-o", File("24.wav"), "--bits", "24"});
    EXPECT_EQ(ReadSound<float>(File("24.wav")).format, SF_FORMAT_WAV | SF_FORMAT_PCM_24);
    Clean({in, "-o", File("low.mp3"), "--bitrate", "32k"});
    Clean({in, "-o", File("high.mp3"), "--bitrate", "256k"});
    EXPECT_GT(ReadFile(File("high.mp3")).size(), 4 * ReadFile(File("low.mp3")).size());
}

}  // namespace
