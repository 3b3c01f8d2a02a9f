#include "stream/polarity_scan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using audio_filter::PolarityScan;
using audio_filter::Stretch;

/// Seconds of a tone of half full scale, the left channel negated from `begin` to `end`, in s.
std::vector<float> Tone(int rate, double seconds, double begin, double end) {
    std::vector<float> samples;
    for (int i = 0; i < static_cast<int>(seconds * rate); ++i) {
        const double t = static_cast<double>(i) / rate;
        const auto right = static_cast<float>(0.5 * std::sin(6.283185307 * 440.0 * t));
        samples.push_back(t >= begin && t < end ? -right : right);
        samples.push_back(right);
    }
    return samples;
}

std::vector<Stretch> Scan(int rate, const std::vector<float>& samples, std::size_t block = 4096) {
    PolarityScan scan(rate);
    const std::size_t frames = samples.size() / 2;
    for (std::size_t done = 0; done < frames; done += block) {
        scan.Add(samples.data() + 2 * done, std::min(block, frames - done));
    }
    return scan.Finish();
}

TEST(PolarityScan, AReversedRecordingIsOneStretchFromItsFirstFrameToItsLastAtEveryRate) {
    for (const int rate : {8000, 16000, 44100, 48000, 96000, 192000}) {
        const std::int64_t frames = 2 * std::int64_t{rate};
        EXPECT_EQ(Scan(rate, Tone(rate, 2.0, 0.0, 2.0)), (std::vector<Stretch>{{0, frames}}))
            << rate;
    }
}

TEST(PolarityScan, ARecordingInPhaseOrSilentOrShorterThanHalfASecondHasNone) {
    EXPECT_EQ(Scan(48000, Tone(48000, 3.0, 9.0, 9.0)), std::vector<Stretch>());
    EXPECT_EQ(Scan(48000, std::vector<float>(2 * 48000)), std::vector<Stretch>());
    EXPECT_EQ(Scan(48000, Tone(48000, 0.4, 0.0, 1.0)), std::vector<Stretch>());
    EXPECT_EQ(Scan(48000, {}), std::vector<Stretch>());
}

TEST(PolarityScan, AReversalIsFoundWhereItBeginsWithinABlockAlthoughTheVerdictComesLater) {
    const std::vector<Stretch> stretches = Scan(48000, Tone(48000, 8.0, 1.0, 8.0));
    ASSERT_EQ(stretches.size(), 1U);
    EXPECT_NEAR(static_cast<double>(stretches[0].begin), 48000.0, 320.0);
    EXPECT_EQ(stretches[0].end, 8 * 48000);
}

TEST(PolarityScan, ItsEndIsFoundWhereTheChannelsAreInPhaseAgain) {
    const std::vector<Stretch> stretches = Scan(48000, Tone(48000, 12.0, 0.0, 4.0));
    ASSERT_EQ(stretches.size(), 1U);
    EXPECT_EQ(stretches[0].begin, 0);
    EXPECT_NEAR(static_cast<double>(stretches[0].end), 4.0 * 48000.0, 320.0);
}

TEST(PolarityScan, After8SecondsInPhaseAReversalOf12SecondsIsMissedAndOf20SecondsFound) {
    EXPECT_EQ(Scan(48000, Tone(48000, 20.0, 8.0, 20.0)), std::vector<Stretch>());
    const std::vector<Stretch> stretches = Scan(48000, Tone(48000, 28.0, 8.0, 28.0));
    ASSERT_EQ(stretches.size(), 1U);
    EXPECT_NEAR(static_cast<double>(stretches[0].begin), 8.0 * 48000.0, 320.0);
}

TEST(PolarityScan, SilenceBeforeTheReversedSoundBelongsToIt) {
    std::vector<float> samples(2 * 48000);
    const std::vector<float> tone = Tone(48000, 2.0, 0.0, 2.0);
    samples.insert(samples.end(), tone.begin(), tone.end());
    EXPECT_EQ(Scan(48000, samples), (std::vector<Stretch>{{0, 3 * 48000}}));
}

TEST(PolarityScan, TheLengthOfTheBlocksDoesNotMatter) {
    const std::vector<float> samples = Tone(44100, 6.0, 1.0, 5.0);
    const std::vector<Stretch> expected = Scan(44100, samples);
    ASSERT_FALSE(expected.empty());
    for (const std::size_t block : {1U, 319U, 320U, 321U, 300000U}) {
        EXPECT_EQ(Scan(44100, samples, block), expected) << block;
    }
}

}  // namespace
