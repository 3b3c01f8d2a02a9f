#include "stream/packed_settings.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace audio_filter::internal {

namespace {

TEST(PackedSettings, EverySettingOf5LevelsAnd5SwitchesComesBack) {
    for (int level = -1; level <= 3; ++level) {
        for (int bits = 0; bits < 32; ++bits) {
            StreamSettings settings;
            settings.suppression = level < 0 ? std::nullopt : std::optional(level);
            settings.phaseCheck = (bits & 1) != 0;
            settings.mix = (bits & 2) != 0;
            settings.music = (bits & 4) != 0 ? MusicMode::kKeep : MusicMode::kIgnore;
            settings.gain = (bits & 8) != 0 ? std::optional(0.3F) : std::nullopt;
            settings.reversed = static_cast<std::uint16_t>(bits * 2114);
            settings.highBand = (bits & 16) != 0;
            EXPECT_EQ(Unpack(Pack(settings)), settings) << level << " " << bits;
        }
    }
}

TEST(PackedSettings, OutOfRangeNumbersAreClampedAndAGainOfNaNIs0) {
    const auto level = [](int given) {
        return Unpack(Pack({.suppression = given})).suppression.value();
    };
    EXPECT_EQ(level(std::numeric_limits<int>::min()), 0);
    EXPECT_EQ(level(-1), 0);
    EXPECT_EQ(level(4), 3);
    EXPECT_EQ(level(std::numeric_limits<int>::max()), 3);
    const auto gain = [](float given) { return Unpack(Pack({.gain = given})).gain.value(); };
    EXPECT_EQ(gain(-0.1F), 0.0F);
    EXPECT_EQ(gain(1.1F), 1.0F);
    EXPECT_EQ(gain(std::numeric_limits<float>::infinity()), 1.0F);
    EXPECT_EQ(gain(std::nanf("")), 0.0F);
}

}  // namespace

}  // namespace audio_filter::internal
