#include "host/page/column_history.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include "support/seed.h"

namespace {

constexpr int kRate = 8000;

std::vector<float> Tone(std::size_t frames, double hertz, float amplitude) {
    std::vector<float> samples(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        const double turn = hertz * static_cast<double>(i) / kRate;
        samples[i] = amplitude * static_cast<float>(std::sin(2.0 * std::numbers::pi * turn));
    }
    return samples;
}

std::vector<float> Times(std::vector<float> samples, float factor) {
    for (float& sample : samples) {
        sample *= factor;
    }
    return samples;
}

struct FilledHistory : ColumnHistory {
    FilledHistory(const std::vector<float>& before, const std::vector<float>& after,
                  int channels = 1)
        : ColumnHistory(kRate, channels) {
        Add(before, after);
        Finish();
    }
};

const HistoryColumn& Middle(const ColumnHistory& history) {
    return history.Columns()[history.Columns().size() / 2];
}

std::size_t LoudestRow(const std::vector<float>& rows) {
    return static_cast<std::size_t>(std::max_element(rows.begin(), rows.end()) - rows.begin());
}

TEST(ColumnHistory, AToneOf1000HzOf4000LiesInRow64Of256) {
    const std::vector<float> tone = Tone(4000, 1004.0, 0.5F);
    const FilledHistory history(tone, tone);
    EXPECT_EQ(history.HighestFrequency(), 4000.0);
    EXPECT_EQ(LoudestRow(Middle(history).spectra[0]), 64U);
}

TEST(ColumnHistory, WhatWasRemovedIsTheDifferenceInTime) {
    const std::vector<float> tone = Tone(4000, 1004.0, 0.5F);
    const FilledHistory history(tone, Times(tone, 0.25F));
    const HistoryColumn& column = Middle(history);
    EXPECT_NEAR(column.waves[0].power, 0.125, 0.002);
    EXPECT_NEAR(column.waves[1].power, 0.125 / 16.0, 0.0002);
    EXPECT_NEAR(column.waves[2].power, 0.125 * 9.0 / 16.0, 0.002);
    const double removed = static_cast<double>(column.spectra[2][64] / column.spectra[0][64]);
    EXPECT_NEAR(removed, 9.0 / 16.0, 1e-4);
}

TEST(ColumnHistory, ColumnsOf128FramesHoldTheExtremesOfTheirTime) {
    std::vector<float> before(1280);
    before[3 * 128] = 0.75F;
    before[4 * 128 - 1] = -0.5F;
    const FilledHistory history(before, std::vector<float>(1280));
    ASSERT_EQ(history.Columns().size(), 10U);
    EXPECT_EQ(history.ColumnSeconds(), 0.016);
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(history.Columns()[i].waves[0].most, i == 3 ? 0.75F : 0.0F) << i;
        EXPECT_EQ(history.Columns()[i].waves[0].least, i == 3 ? -0.5F : 0.0F) << i;
    }
}

TEST(ColumnHistory, MoreThan2000ColumnsBecomeHalfAsManyTwiceAsLong) {
    const std::size_t frames = 2001 * 128;
    const std::vector<float> tone = Tone(frames, 1004.0, 0.5F);
    const FilledHistory history(tone, tone);
    EXPECT_EQ(history.Columns().size(), 1001U);
    EXPECT_EQ(history.ColumnSeconds(), 0.032);
    EXPECT_EQ(history.Seconds(), static_cast<double>(frames) / kRate);
    EXPECT_NEAR(history.Columns()[500].waves[0].power, 0.125, 0.002);
    EXPECT_EQ(history.Columns()[500].hops, 2.0);
}

TEST(ColumnHistory, AMergedColumnKeepsTheLevelOfItsQuietestHop) {
    std::vector<float> tone = Tone(2001 * 128, 1004.0, 0.5F);
    std::fill_n(tone.begin() + 1000 * 128, 128, 0.0F);
    const FilledHistory history(tone, tone);
    const HistoryColumn::Wave& wave = history.Columns()[500].waves[0];
    EXPECT_NEAR(wave.power, 0.0625, 0.002);
    EXPECT_EQ(wave.quietest, 0.0);
    EXPECT_GT(history.Columns()[499].waves[0].quietest, 0.1);
}

TEST(ColumnHistory, BlocksOfAnyLengthGiveTheSameColumns) {
    std::mt19937 random = SeededRandom();
    const std::vector<float> tone = Tone(3000, 700.0, 0.5F);
    const FilledHistory whole(tone, Times(tone, 0.5F));
    ColumnHistory pieces(kRate, 1);
    for (std::size_t at = 0; at < tone.size();) {
        const std::size_t count = std::min<std::size_t>(random() % 700, tone.size() - at);
        const std::vector<float> block(tone.begin() + static_cast<std::ptrdiff_t>(at),
                                       tone.begin() + static_cast<std::ptrdiff_t>(at + count));
        pieces.Add(block, Times(block, 0.5F));
        at += count;
    }
    pieces.Finish();
    ASSERT_EQ(pieces.Columns().size(), whole.Columns().size());
    for (std::size_t i = 0; i < whole.Columns().size(); ++i) {
        EXPECT_EQ(pieces.Columns()[i].spectra, whole.Columns()[i].spectra) << i;
    }
}

TEST(ColumnHistory, OppositeChannelsDoNotCancel) {
    std::vector<float> stereo;
    for (const float sample : Tone(4000, 1004.0, 0.5F)) {
        stereo.push_back(sample);
        stereo.push_back(-sample);
    }
    const FilledHistory history(stereo, stereo, 2);
    EXPECT_NEAR(Middle(history).waves[0].power, 0.125, 0.002);
    EXPECT_EQ(LoudestRow(Middle(history).spectra[0]), 64U);
}

TEST(ColumnHistory, At96kHzTheHighestRowEndsAt24kHz) {
    EXPECT_EQ(ColumnHistory(96000, 1).HighestFrequency(), 24000.0);
    EXPECT_EQ(ColumnHistory(44100, 1).HighestFrequency(), 22050.0);
}

TEST(ColumnHistory, NaNAndInfinityCountAsSilence) {
    std::vector<float> before(1280, std::numeric_limits<float>::quiet_NaN());
    before[5] = std::numeric_limits<float>::infinity();
    const FilledHistory history(before, before);
    for (const HistoryColumn& column : history.Columns()) {
        EXPECT_EQ(column.waves[0].power, 0.0);
        EXPECT_EQ(column.spectra[0], std::vector<float>(ColumnHistory::kRows));
    }
}

}  // namespace
