#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/plugins/obs/obs_host.h"
#include "tests/plugins/obs/signals.h"

namespace audio_filter::obs {

namespace {

std::vector<std::string> Names(obs_properties_t* properties) {
    std::vector<std::string> names;
    obs_property_t* property = obs_properties_first(properties);
    while (property != nullptr) {
        names.emplace_back(obs_property_name(property));
        obs_property_next(&property);
    }
    return names;
}

/// The properties of a filter.
class Dialog {
public:
    explicit Dialog(const FilteredSource& source)
        : mProperties(obs_source_properties(source.Filter())) {}
    ~Dialog() { obs_properties_destroy(mProperties); }
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    obs_properties_t* All() const { return mProperties; }
    obs_property_t* Get(const char* name) const { return obs_properties_get(mProperties, name); }
    std::string Report() const { return obs_property_description(Get("report")); }

private:
    obs_properties_t* mProperties;
};

TEST(ObsProperties, ShowTheSettingsOfAllPlugIns) {
    SetAudio(48000, SPEAKERS_STEREO);
    const FilteredSource source;
    const Dialog dialog(source);
    EXPECT_EQ(Names(dialog.All()),
              (std::vector<std::string>{"suppression", "music_detection", "gain_on", "phase_check",
                                        "high_band", "report", "refresh"}));
    obs_property_t* suppression = dialog.Get("suppression");
    ASSERT_EQ(obs_property_list_item_count(suppression), 5U);
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(obs_property_list_item_int(suppression, i), static_cast<int>(i) - 1);
    }
    obs_property_t* gain = dialog.Get("gain");
    EXPECT_EQ(obs_property_float_min(gain), 0.0);
    EXPECT_EQ(obs_property_float_max(gain), 1.0);
}

/// Whether a text, if there is one, is no key of the locale file: OBS shows the key of one that is missing.
bool IsText(const char* text) {
    const std::string words = text == nullptr ? " " : text;
    return words == "Gain" || words.find(' ') != std::string::npos;
}

TEST(ObsProperties, HaveATextInTheLocaleFile) {
    SetAudio(48000, SPEAKERS_STEREO);
    const FilteredSource source;
    const Dialog dialog(source);
    EXPECT_STREQ(obs_source_get_display_name("audio_filter"),
                 "Audio filter (noise suppression, gain, phase)");
    obs_property_t* suppression = dialog.Get("suppression");
    EXPECT_STREQ(obs_property_list_item_name(suppression, 0), "Off");
    EXPECT_STREQ(obs_property_list_item_name(suppression, 4), "3 (most aggressive)");
    for (const char* name : {"suppression", "music_detection", "gain_on", "gain", "phase_check",
                             "high_band", "refresh"}) {
        EXPECT_TRUE(IsText(obs_property_description(dialog.Get(name)))) << name;
        EXPECT_TRUE(IsText(obs_property_long_description(dialog.Get(name)))) << name;
    }
}

TEST(ObsProperties, HaveTheSharedDefaults) {
    SetAudio(48000, SPEAKERS_STEREO);
    obs_data_t* defaults = obs_get_source_defaults("audio_filter");
    EXPECT_EQ(obs_data_get_int(defaults, "suppression"), 2);
    EXPECT_FALSE(obs_data_get_bool(defaults, "gain_on"));
    EXPECT_EQ(obs_data_get_double(defaults, "gain"), 0.5);
    EXPECT_FALSE(obs_data_get_bool(defaults, "phase_check"));
    EXPECT_FALSE(obs_data_get_bool(defaults, "music_detection"));
    EXPECT_TRUE(obs_data_get_bool(defaults, "high_band"));
    obs_data_release(defaults);
}

TEST(ObsProperties, DisableWhatTheFormatDoesNotHave) {
    SetAudio(48000, SPEAKERS_MONO);
    {
        const FilteredSource mono;
        const Dialog dialog(mono);
        EXPECT_FALSE(obs_property_enabled(dialog.Get("phase_check")));
        EXPECT_FALSE(obs_property_enabled(dialog.Get("high_band")));
    }
    SetAudio(96000, SPEAKERS_STEREO);
    const FilteredSource stereo;
    const Dialog dialog(stereo);
    EXPECT_TRUE(obs_property_enabled(dialog.Get("phase_check")));
    EXPECT_TRUE(obs_property_enabled(dialog.Get("high_band")));
}

TEST(ObsProperties, ReportLatencyMusicAndReductionAndUpdateThemByTheButton) {
    SetAudio(48000, SPEAKERS_STEREO);
    FilteredSource source(R"({"suppression": 3, "music_detection": true})");
    const Dialog dialog(source);
    EXPECT_EQ(dialog.Report(), "Latency: 10.8 ms (48000 Hz)\nMusic: no\nNoise reduction: 0.0 dB");
    source.PlayAll(Noise(2, 48000), 1024);
    EXPECT_TRUE(obs_property_button_clicked(dialog.Get("refresh"), source.Filter()));
    const std::string report = dialog.Report();
    const std::size_t reduction = report.find("reduction: ");
    ASSERT_NE(reduction, std::string::npos);
    EXPECT_GT(std::stod(report.substr(reduction + 11)), 6.0) << report;
}

TEST(ObsProperties, SayThatAFormatIsNotSupported) {
    SetAudio(4000, SPEAKERS_STEREO);
    const FilteredSource source;
    const Dialog dialog(source);
    EXPECT_EQ(dialog.Report().find("This audio format is not supported"), 0U);
    EXPECT_EQ(obs_property_text_info_type(dialog.Get("report")), OBS_TEXT_INFO_ERROR);
}

TEST(ObsProperties, ExistWithoutAFilter) {
    obs_properties_t* properties = obs_get_source_properties("audio_filter");
    EXPECT_EQ(Names(properties).size(), 5U);
    obs_properties_destroy(properties);
}

}  // namespace

}  // namespace audio_filter::obs
