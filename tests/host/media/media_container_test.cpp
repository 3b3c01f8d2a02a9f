#include "host/media/media_container.h"

#include <gtest/gtest.h>

#include "host/failure.h"

namespace {

constexpr TrackFacts kAac = {AV_CODEC_ID_AAC, 48000, 2, false, 128000};
constexpr TrackFacts kWide = {AV_CODEC_ID_PCM_S24LE, 44100, 1, true, 0};

EncoderChoice Choose(const std::string& path, const TrackFacts& track,
                     const OutputOptions& options = {}) {
    return ChooseEncoder(path, *MediaContainerOf(path), track, options);
}

std::string Refusal(const std::string& path, const TrackFacts& track,
                    const OutputOptions& options = {}) {
    try {
        Choose(path, track, options);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "";
}

TEST(MediaContainer, IsNamedByTheExtensionInAnyCase) {
    EXPECT_STREQ(MediaContainerOf("a.MP4")->muxer, "mp4");
    EXPECT_STREQ(MediaContainerOf("b/a.webm")->muxer, "webm");
    EXPECT_EQ(MediaContainerOf("a.wav"), nullptr) << "libsndfile writes it";
    EXPECT_EQ(MediaContainerOf("a"), nullptr);
}

TEST(MediaContainer, KeepsTheCodecAndBitRateOfTheInputIfItCan) {
    const EncoderChoice kept = Choose("a.mkv", kAac);
    EXPECT_EQ(kept.codec->id, AV_CODEC_ID_AAC);
    EXPECT_EQ(kept.bitRate, 128000);
    EXPECT_EQ(kept.sampleRate, 48000);
    EXPECT_EQ(Choose("a.webm", kAac).codec->id, AV_CODEC_ID_OPUS);
    EXPECT_EQ(Choose("a.mov", {AV_CODEC_ID_FLAC, 48000, 2, false, 0}).codec->id, AV_CODEC_ID_AAC);
    EXPECT_EQ(Choose("a.mp3", kAac).codec->id, AV_CODEC_ID_MP3);
    EXPECT_EQ(Choose("a.ogg", kAac).codec->id, AV_CODEC_ID_VORBIS);
    EXPECT_EQ(Choose("a.wma", kAac).codec->id, AV_CODEC_ID_WMAV2);
}

TEST(MediaContainer, TheNextHigherRateOfTheCodecIsTaken) {
    EXPECT_EQ(Choose("a.opus", kWide).sampleRate, 48000);
    TrackFacts fast = kAac;
    fast.sampleRate = 96000;
    EXPECT_EQ(Choose("a.mp3", fast).sampleRate, 48000) << "the highest there is";
}

TEST(MediaContainer, LosslessCodecsKeepTheBitsOfTheInputUnlessTold) {
    EXPECT_EQ(Choose("a.mkv", kWide).codec->id, AV_CODEC_ID_PCM_S24LE);
    OutputOptions flac = {"flac", {}, {}};
    EXPECT_EQ(Choose("a.mka", kWide, flac).bitsPerSample, 24);
    flac.bits = OutputBits::k16;
    EXPECT_EQ(Choose("a.mka", kWide, flac).samples, AV_SAMPLE_FMT_S16);
    EXPECT_EQ(Choose("a.mkv", kWide, {"pcm", {}, OutputBits::kFloat}).codec->id,
              AV_CODEC_ID_PCM_F32LE);
    EXPECT_EQ(Choose("a.m4a", {AV_CODEC_ID_ALAC, 44100, 2, false, 0}).samples, AV_SAMPLE_FMT_S16P);
}

TEST(MediaContainer, BitRatesAreThoseOfTheOptionWithinTheLimitsOfTheCodec) {
    EXPECT_EQ(Choose("a.mp3", kAac, {"", 64000, {}}).bitRate, 64000);
    EXPECT_EQ(Choose("a.mp3", kAac, {"", 900000, {}}).bitRate, 320000);
    EXPECT_EQ(Choose("a.opus", kWide).bitRate, 96000) << "for a lossless input, a channel";
}

TEST(MediaContainer, RefusesInWordsWhatItCannotHold) {
    EXPECT_EQ(Refusal("a.webm", kAac, {"aac", {}, {}}), "a.webm: WebM cannot hold aac audio");
    EXPECT_EQ(Refusal("a.mp3", kAac, {"mp3", {}, OutputBits::k24}),
              "a.mp3: --bits is for lossless codecs, not for mp3");
    EXPECT_EQ(Refusal("a.mkv", kAac, {"nonsense", {}, {}}),
              "a.mkv: this build cannot encode nonsense");
    EXPECT_EQ(Refusal("a.mka", kWide, {"flac", {}, OutputBits::kFloat}),
              "a.mka: flac cannot hold these samples: choose other --bits");
    EXPECT_EQ(Refusal("a.mp3", {AV_CODEC_ID_AAC, 48000, 6, false, 384000}),
              "a.mp3: mp3 cannot hold 6 channels");
}

TEST(MediaContainer, VideoCodecsHaveTheirContainers) {
    EXPECT_TRUE(CanHold(*MediaContainerOf("a.mp4"), AV_CODEC_ID_H264));
    EXPECT_TRUE(CanHold(*MediaContainerOf("a.mkv"), AV_CODEC_ID_H264));
    EXPECT_FALSE(CanHold(*MediaContainerOf("a.webm"), AV_CODEC_ID_H264));
    EXPECT_TRUE(CanHold(*MediaContainerOf("a.webm"), AV_CODEC_ID_VP9));
    EXPECT_FALSE(CanHold(*MediaContainerOf("a.mp4"), AV_CODEC_ID_SUBRIP));
}

}  // namespace
