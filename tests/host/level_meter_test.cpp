#include "host/level_meter.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

std::vector<float> Sine(std::size_t frames, double rate, double level) {
    std::vector<float> signal(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        signal[i] = static_cast<float>(
            level * std::sin(6.283185307 * 1000.0 * static_cast<double>(i) / rate));
    }
    return signal;
}

TEST(LevelMeter, AFullScaleSineOf1000HzIsAbout3LufsBelow0AndPeaksAt0) {
    LevelMeter meter({48000, 1, SampleFormat::kFloat});
    meter.Add(Sine(48000 * 5, 48000, 1.0));
    EXPECT_NEAR(meter.Loudness(), -3.0, 0.1);
    EXPECT_NEAR(meter.Peak(), 0.0, 0.01);
}

TEST(LevelMeter, SixteenBitAndFloatMeasureAlike) {
    LevelMeter meter({32000, 1, SampleFormat::kS16});
    meter.Add(std::vector<short>(1600, -16384));
    EXPECT_NEAR(meter.Peak(), -6.0206, 1e-3);
    ASSERT_EQ(meter.Powers().size(), 1U);
    EXPECT_DOUBLE_EQ(meter.Powers()[0], 0.25);
}

TEST(LevelMeter, SilenceIsMinusInfinity) {
    LevelMeter meter({32000, 2, SampleFormat::kS16});
    meter.Add(std::vector<short>(64000));
    EXPECT_EQ(meter.Peak(), -INFINITY);
    EXPECT_EQ(meter.Loudness(), -INFINITY);
}

TEST(LevelMeter, WindowsAre50msOfAllChannelsWhateverTheBlockLength) {
    LevelMeter meter({1000, 2, SampleFormat::kFloat});  // 50 frames a window
    for (int i = 0; i < 11; ++i) {
        meter.Add(std::vector<float>(20, i < 5 ? 0.5F : 1.0F));  // 10 frames each
    }
    EXPECT_EQ(meter.Powers(), (std::vector<double>{0.25, 1.0, 1.0}));
}

TEST(CompareWindows, TheQuietestTenthOfTheInputIsTheFloorBeforeAndAfter) {
    std::vector<double> before(20, 0.1);
    std::vector<double> after(20, 0.01);
    before[3] = before[7] = 1e-4;
    after[3] = after[7] = 1e-6;
    const WindowLevels levels = CompareWindows(before, after);
    EXPECT_NEAR(levels.noiseFloorBefore, -40.0, 1e-9);
    EXPECT_NEAR(levels.noiseFloorAfter, -60.0, 1e-9);
    EXPECT_NEAR(levels.speechBefore, -10.0, 1e-9);
    EXPECT_NEAR(levels.speechAfter, -20.0, 1e-9);
}

TEST(CompareWindows, WithoutAWindow15dBAboveTheFloorThereIsNoSpeech) {
    const WindowLevels levels = CompareWindows({1e-3, 2e-3, 3e-3}, {1e-3, 2e-3, 3e-3});
    EXPECT_NEAR(levels.noiseFloorBefore, -30.0, 1e-9);
    EXPECT_EQ(levels.speechBefore, -INFINITY);
}

TEST(CompareWindows, AWindowExactly15dBAboveTheFloorIsSpeechAndTheNextNumberBelowIsNot) {
    double at = std::pow(10.0, 1.5);  // above a floor of 1
    while (10.0 * std::log10(at) < 15.0) {
        at = std::nextafter(at, INFINITY);
    }
    while (10.0 * std::log10(std::nextafter(at, 0.0)) >= 15.0) {
        at = std::nextafter(at, 0.0);
    }
    const WindowLevels with = CompareWindows({1.0, at}, {1.0, 0.1});
    EXPECT_NEAR(with.speechBefore, 15.0, 1e-9);
    EXPECT_NEAR(with.speechAfter, -10.0, 1e-9);
    const WindowLevels without = CompareWindows({1.0, std::nextafter(at, 0.0)}, {1.0, 0.1});
    EXPECT_EQ(without.speechBefore, -INFINITY);
    EXPECT_EQ(without.speechAfter, -INFINITY);
}

TEST(CompareWindows, AnEmptyRecordingHasNoLevels) {
    EXPECT_EQ(CompareWindows({}, {}).noiseFloorBefore, -INFINITY);
}

}  // namespace
