#include "host/stream_cleaner.h"

#include <gtest/gtest.h>

#include "sound_files.h"
#include "support/bytes.h"

namespace {

template <typename Sample>
struct Cleaned {
    std::vector<Sample> samples;
    std::int64_t correctedFrames = 0;
    bool checksPhase = false;
};

template <typename Sample>
Cleaned<Sample> Clean(const ChainSettings& settings, int rate, int channels,
                      const std::vector<Sample>& in, std::size_t blockFrames) {
    Cleaned<Sample> cleaned;
    StreamCleaner<Sample> cleaner(
        settings,
        {rate, channels, std::is_same_v<Sample, short> ? SampleKind::kS16 : SampleKind::kFloat},
        [&cleaned](const std::vector<Sample>& block) {
            cleaned.samples.insert(cleaned.samples.end(), block.begin(), block.end());
        });
    const std::size_t step = blockFrames * static_cast<std::size_t>(channels);
    for (std::size_t at = 0; at < in.size(); at += step) {
        const std::size_t end = std::min(at + step, in.size());
        cleaner.Push({in.begin() + static_cast<std::ptrdiff_t>(at),
                      in.begin() + static_cast<std::ptrdiff_t>(end)});
    }
    cleaner.Finish();
    cleaned.correctedFrames = cleaner.Chain().CorrectedFrames();
    cleaned.checksPhase = cleaner.Chain().ChecksPhase();
    return cleaned;
}

ChainSettings Off() {
    return {std::nullopt, std::nullopt, false};
}

TEST(StreamCleaner, GivesOutAsManyFramesAsCameInAtAnyRateAndLength) {
    for (const int rate : {8000, 11025, 16000, 22050, 32000, 44100, 48000, 96000, 12345}) {
        for (const std::size_t frames : {std::size_t{1}, std::size_t{2}, std::size_t{319},
                                         std::size_t{320}, std::size_t{20011}}) {
            for (const int channels : {1, 2}) {
                const std::vector<short> in(frames * static_cast<std::size_t>(channels), 1000);
                EXPECT_EQ(Clean(ChainSettings{}, rate, channels, in, 441).samples.size(), in.size())
                    << rate << " Hz, " << frames << " frames";
            }
        }
    }
}

TEST(StreamCleaner, WithEverythingOffTheStreamIsUntouchedAtAnyRate) {
    for (const int rate : {8000, 22050, 48000, 96000}) {
        const std::vector<short> in = As<short>(Bursts(5000, rate));
        EXPECT_EQ(Clean(Off(), rate, 1, in, 100).samples, in) << rate;
        EXPECT_TRUE(
            SameBits(Clean(Off(), rate, 2, Bursts(5000, rate), 100).samples, Bursts(5000, rate)));
    }
}

TEST(StreamCleaner, TheDelayIsTakenAwayAtEveryRate) {
    for (const int rate : {32000, 44100, 48000, 22050}) {
        const std::vector<float> in = Bursts(static_cast<std::size_t>(rate) * 3, rate);
        const std::vector<short> out =
            Clean(ChainSettings{0, {}, false}, rate, 1, As<short>(in), 480).samples;
        std::vector<float> cleaned;
        for (const short sample : out) {
            cleaned.push_back(ToFloat(sample));
        }
        EXPECT_LE(std::abs(Lag(in, cleaned, 300)), 1) << rate;
        EXPECT_LE(
            std::abs(Lag(in, Clean(ChainSettings{0, {}, false}, rate, 1, in, 480).samples, 300)), 1)
            << rate << " Hz, float";
    }
}

TEST(StreamCleaner, At8000And16000HzWhatPassesIsInItsPlace) {
    for (const int rate : {8000, 16000}) {
        const std::vector<float> in = Bursts(static_cast<std::size_t>(rate) * 3, rate);
        const std::vector<float> out = Clean(ChainSettings{0, {}, false}, rate, 1, in, 160).samples;
        EXPECT_LE(std::abs(Lag(in, out, 100)), 1) << rate;
    }
}

TEST(StreamCleaner, TheBlocksDoNotMatter) {
    const std::vector<short> in = As<short>(Bursts(64000, 32000));
    const std::vector<short> expected =
        Clean(ChainSettings{3, 0.5F, false}, 32000, 2, in, 32000).samples;
    for (const std::size_t block : {std::size_t{32}, std::size_t{224}, std::size_t{321}}) {
        EXPECT_EQ(Clean(ChainSettings{3, 0.5F, false}, 32000, 2, in, block).samples, expected)
            << block;
    }
}

TEST(StreamCleaner, RunsThePhaseCheckThenTheSuppressorThenTheGain) {
    // Left reversed against right, for five seconds, in blocks of 100 ms.
    const std::vector<float> right = Bursts(32000 * 5, 32000);
    std::vector<short> in;
    for (const short sample : As<short>(right)) {
        in.push_back(static_cast<short>(-sample));
        in.push_back(sample);
    }
    const Cleaned<short> cleaned = Clean(ChainSettings{2, 0.5F, true}, 32000, 2, in, 3200);

    PhaseCheck check;
    AudioDenoise denoise;
    AudioGain gain;
    check.Init(32000, false);
    denoise.Init(32000, 2, SAMPLE_FMT_S16, 2);
    gain.Init(SAMPLE_FMT_S16);
    gain.SetGain(0.5F);
    std::vector<short> expected;
    std::int64_t corrected = 0;
    in.resize(in.size() + 6400);  // silence to push out the rest
    for (std::size_t at = 0; at < in.size(); at += 6400) {
        std::vector<short> block(in.begin() + static_cast<std::ptrdiff_t>(at),
                                 in.begin() + static_cast<std::ptrdiff_t>(at + 6400));
        const std::vector<short> before = block;
        check.Check(block.data(), 6400);
        corrected += block != before ? 3200 : 0;
        std::vector<short> out(7040);
        int size = 12800;
        denoise.Process(BytesOf(block), BytesOf(out), size);
        gain.Process(BytesOf(out), size);
        expected.insert(expected.end(), out.begin(), out.begin() + size / 2);
    }
    const std::size_t delay = 2 * 196;
    expected.erase(expected.begin(), expected.begin() + delay);
    expected.resize(cleaned.samples.size());
    EXPECT_EQ(cleaned.samples, expected);
    EXPECT_TRUE(cleaned.checksPhase);
    EXPECT_EQ(cleaned.correctedFrames, corrected);
    EXPECT_GT(corrected, 0);
}

TEST(StreamCleaner, AMonoStreamHasNoPhaseCheckAndNeitherHasARateOutOfItsRange) {
    EXPECT_FALSE(Clean(ChainSettings{}, 32000, 1, std::vector<short>(100), 10).checksPhase);
    EXPECT_FALSE(
        Clean(ChainSettings{{}, {}, true}, 96000, 2, std::vector<short>(100), 10).checksPhase);
    EXPECT_TRUE(
        Clean(ChainSettings{3, {}, true}, 96000, 2, std::vector<short>(100), 10).checksPhase)
        << "processed at 32000 Hz";
}

}  // namespace
