#include "host/filter_settings.h"

#include <gtest/gtest.h>

namespace {

TEST(FilterSettings, TheDefaultsAreLevel2NoGainPhaseCheckOfTheFileAndMix) {
    const FilterSettings settings;
    EXPECT_EQ(settings.denoiseLevel, 2);
    EXPECT_EQ(settings.gain, std::nullopt);
    EXPECT_EQ(settings.phaseCheck, PhaseMode::kFile);
    EXPECT_TRUE(settings.mix);
    EXPECT_FALSE(settings.keepMusic);
}

TEST(FilterSettings, EachNameSetsItsSetting) {
    FilterSettings settings;
    EXPECT_TRUE(ApplySetting(settings, "denoise", "0"));
    EXPECT_TRUE(ApplySetting(settings, "gain", "0.4"));
    EXPECT_TRUE(ApplySetting(settings, "phase-check", "off"));
    EXPECT_TRUE(ApplySetting(settings, "mix", "off"));
    EXPECT_TRUE(ApplySetting(settings, "music", "keep"));
    EXPECT_EQ(settings.denoiseLevel, 0);
    EXPECT_EQ(settings.gain, 0.4F);
    EXPECT_EQ(settings.phaseCheck, PhaseMode::kOff);
    EXPECT_FALSE(settings.mix);
    EXPECT_TRUE(settings.keepMusic);
    EXPECT_TRUE(ApplySetting(settings, "denoise", "off"));
    EXPECT_TRUE(ApplySetting(settings, "gain", "off"));
    EXPECT_TRUE(ApplySetting(settings, "phase-check", "live"));
    EXPECT_EQ(settings.phaseCheck, PhaseMode::kLive);
    EXPECT_TRUE(ApplySetting(settings, "phase-check", "on"));
    EXPECT_TRUE(ApplySetting(settings, "music", "ignore"));
    EXPECT_TRUE(ApplySetting(settings, "mix", "on"));
    EXPECT_EQ(settings.denoiseLevel, std::nullopt);
    EXPECT_EQ(settings,
              (FilterSettings{std::nullopt, std::nullopt, PhaseMode::kFile, true, false}));
}

TEST(FilterSettings, TheBoundsOfTheRangesAreAccepted) {
    FilterSettings settings;
    EXPECT_TRUE(ApplySetting(settings, "denoise", "3"));
    EXPECT_TRUE(ApplySetting(settings, "gain", "0"));
    EXPECT_TRUE(ApplySetting(settings, "gain", "1"));
    EXPECT_TRUE(ApplySetting(settings, "gain", "1.0"));
    EXPECT_TRUE(ApplySetting(settings, "gain", "1e-3"));
}

TEST(FilterSettings, ValuesOutOfRangeOrNotNumbersAreRefusedAndChangeNothing) {
    const SettingValues bad = {{"denoise", "4"},    {"denoise", "-1"},
                               {"denoise", "1.5"},  {"denoise", ""},
                               {"denoise", "0x2"},  {"denoise", " 2"},
                               {"denoise", "2 "},   {"denoise", "on"},
                               {"denoise", "OFF"},  {"denoise", "99999999999"},
                               {"gain", "1.1"},     {"gain", "-0.1"},
                               {"gain", "nan"},     {"gain", "inf"},
                               {"gain", "1e-50"},   {"gain", "1e50"},
                               {"gain", "0.5x"},    {"gain", "0,5"},
                               {"gain", ""},        {"gain", "0x1p-1"},
                               {"phase-check", ""}, {"phase-check", "1"},
                               {"mix", "maybe"},    {"volume", "on"},
                               {"music", "on"},     {"", "on"},
                               {"Gain", "0.5"}};
    for (const auto& [name, value] : bad) {
        FilterSettings settings;
        settings.gain = 0.25F;
        EXPECT_FALSE(ApplySetting(settings, name, value)) << name << "=" << value;
        FilterSettings unchanged;
        unchanged.gain = 0.25F;
        EXPECT_EQ(settings, unchanged);
    }
}

TEST(FilterSettings, SettingsAreReadInOrder) {
    EXPECT_EQ(ParseSettings("denoise=off,gain=0.4"),
              (SettingValues{{"denoise", "off"}, {"gain", "0.4"}}));
    EXPECT_EQ(ParseSettings("mix=on"), (SettingValues{{"mix", "on"}}));
}

TEST(FilterSettings, MalformedSettingsAreRefused) {
    for (const char* text :
         {"", ",", "mix", "mix=", "=on", "mix=on;gain=1", "gain=2", "denoise=0,gain=2", ",mix=on",
          "mix=on,,gain=1", "mix=on,", "mix=on:gain=1", "volume=1", "mix=on "}) {
        EXPECT_FALSE(ParseSettings(text)) << text;
    }
}

}  // namespace
