#include "host/source_feed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "host/audio_reader.h"
#include "sound_files.h"
#include "support/temp_dir.h"

namespace {

/// A source in memory, read at most 100 frames at a time.
class Tape : public AudioSource {
public:
    Tape(const AudioFormat& format, std::vector<float> samples)
        : mFormat(format), mSamples(std::move(samples)) {}

    const AudioFormat& Format() const override { return mFormat; }
    std::optional<std::int64_t> Frames() const override {
        return static_cast<std::int64_t>(mSamples.size()) / mFormat.channels;
    }
    std::size_t Read(short* samples, std::size_t frames) override { return Take(samples, frames); }
    std::size_t Read(float* samples, std::size_t frames) override { return Take(samples, frames); }

private:
    template <typename Sample>
    std::size_t Take(Sample* samples, std::size_t frames) {
        const auto channels = static_cast<std::size_t>(mFormat.channels);
        const std::size_t count = std::min({frames, std::size_t{100}, mSamples.size() / channels});
        const auto end = mSamples.begin() + static_cast<std::ptrdiff_t>(count * channels);
        std::transform(mSamples.begin(), end, samples, FromFloat<Sample>);
        mSamples.erase(mSamples.begin(), end);
        return count;
    }

    AudioFormat mFormat;
    std::vector<float> mSamples;
};

constexpr AudioFormat kMonoFloat = {32000, 1, SampleFormat::kFloat};
constexpr AudioFormat kStereoFloat = {32000, 2, SampleFormat::kFloat};
constexpr AudioFormat kMonoS16 = {32000, 1, SampleFormat::kS16};

/// Reads a feed to its end, in blocks.
template <typename Sample>
std::vector<Sample> All(SourceFeed<Sample>& feed, std::size_t blockFrames) {
    std::vector<Sample> all;
    while (const std::size_t frames = feed.Fill(blockFrames)) {
        feed.Take(frames, all);
    }
    return all;
}

TEST(SourceFeed, ASourceOfTheCommonFormatPassesUnchangedInAnyBlocks) {
    const std::vector<float> samples = Bursts(1001, 32000);
    for (const std::size_t block : {1U, 99U, 100U, 101U, 5000U}) {
        SourceFeed<float> feed(std::make_unique<Tape>(kMonoFloat, samples), kMonoFloat);
        EXPECT_EQ(feed.Frames(), 1001);
        EXPECT_EQ(All(feed, block), samples) << block;
    }
}

TEST(SourceFeed, ReadsAheadAsRequestedAndReturnsTheFramesAvailable) {
    SourceFeed<float> feed(std::make_unique<Tape>(kStereoFloat, std::vector<float>(500, 0.5F)),
                           kStereoFloat);
    EXPECT_EQ(feed.Fill(200), 200U);
    EXPECT_EQ(feed.Fill(240), 240U);
    EXPECT_EQ(feed.Fill(1000), 250U) << "250 frames in all";
    EXPECT_EQ(feed.Fill(10), 10U) << "no more than requested";
}

TEST(SourceFeed, AShorterSourceIsPaddedWithSilence) {
    SourceFeed<short> feed(std::make_unique<Tape>(kMonoS16, std::vector<float>(3, 0.5F)), kMonoS16);
    EXPECT_EQ(feed.Fill(5), 3U);
    std::vector<short> block = {7};
    feed.Take(5, block);
    EXPECT_EQ(block, (std::vector<short>{7, 16384, 16384, 16384, 0, 0}));
    EXPECT_EQ(feed.Fill(5), 0U);
    feed.Take(2, block);
    EXPECT_EQ(block.size(), 8U);
    EXPECT_EQ(block.back(), 0);
}

TEST(SourceFeed, MonoBecomesTwoEqualChannelsAndStereoTheMeanOfBoth) {
    SourceFeed<float> wide(std::make_unique<Tape>(kMonoFloat, std::vector<float>{0.5F, -0.25F}),
                           kStereoFloat);
    EXPECT_EQ(All(wide, 10), (std::vector<float>{0.5F, 0.5F, -0.25F, -0.25F}));
    SourceFeed<float> narrow(
        std::make_unique<Tape>(kStereoFloat, std::vector<float>{0.5F, -0.25F, 1.0F, 1.0F}),
        kMonoFloat);
    EXPECT_EQ(narrow.Frames(), 2);
    EXPECT_EQ(All(narrow, 10), (std::vector<float>{0.125F, 1.0F}));
}

TEST(SourceFeed, SurroundBecomesADownmixThatCannotClipAndStereoItsFrontChannels) {
    const AudioFormat surround = {32000, 6, SampleFormat::kFloat};
    SourceFeed<float> narrow(
        std::make_unique<Tape>(surround, std::vector<float>{1.0F, -1.0F, 1.0F, 1.0F, 1.0F, -1.0F}),
        kStereoFloat);
    const std::vector<float> mixed = All(narrow, 10);
    ASSERT_EQ(mixed.size(), 2U);
    EXPECT_FLOAT_EQ(mixed[0], 1.0F);
    EXPECT_NEAR(mixed[1], -0.41421F, 1e-5F) << "(-1 + 0.7071 - 0.7071) / 2.4142";
    SourceFeed<float> wide(std::make_unique<Tape>(kStereoFloat, std::vector<float>{0.5F, -0.25F}),
                           surround);
    EXPECT_EQ(All(wide, 10), (std::vector<float>{0.5F, -0.25F, 0.0F, 0.0F, 0.0F, 0.0F}));
}

TEST(SourceFeed, OneSecondAt48000HzIsOneSecondAt32000HzAndAligned) {
    std::vector<float> in(48000);
    for (std::size_t i = 0; i < in.size(); ++i) {
        in[i] = 0.5F * std::sin(0.06F * static_cast<float>(i));
    }
    SourceFeed<float> feed(std::make_unique<Tape>(AudioFormat{48000, 1, SampleFormat::kFloat}, in),
                           kMonoFloat);
    EXPECT_EQ(feed.Frames(), 32000);
    const std::vector<float> out = All(feed, 320);
    EXPECT_NEAR(static_cast<double>(out.size()), 32000.0, 1.0);
    for (std::size_t i = 200; i + 100 < out.size(); i += 2) {
        ASSERT_NEAR(out[i], in[i * 3 / 2], 1e-3F) << i;
    }
}

TEST(SourceFeed, AFloatFileAmong16BitSourcesKeepsItsLevel) {
    const TempDir dir;
    const std::vector<float> samples = {0.5F, -0.5F, 0.25F, 2.0F};
    for (const int subtype : {SF_FORMAT_FLOAT, SF_FORMAT_DOUBLE, SF_FORMAT_PCM_24}) {
        WriteSound<float>(dir.File("in.wav"), {32000, 1, SF_FORMAT_WAV | subtype, samples});
        SourceFeed<short> feed(std::make_unique<AudioReader>(dir.File("in.wav")), kMonoS16);
        const std::vector<short> all = All(feed, 10);
        ASSERT_EQ(all.size(), 4U);
        EXPECT_EQ(all[0], 16384) << subtype;
        EXPECT_EQ(all[1], -16384) << subtype;
        EXPECT_EQ(all[2], 8192) << subtype;
    }
}

TEST(SourceFeed, A16BitFileAmongFloatSourcesKeepsItsLevel) {
    const TempDir dir;
    WriteSound<short>(dir.File("in.wav"),
                      {32000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, {16384, -32768, 1}});
    SourceFeed<float> feed(std::make_unique<AudioReader>(dir.File("in.wav")), kMonoFloat);
    EXPECT_EQ(All(feed, 10), (std::vector<float>{0.5F, -1.0F, 1.0F / 32768.0F}));
}

}  // namespace
