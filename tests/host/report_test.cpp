#include "host/report.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

Report Example() {
    Report report = {};
    report.inputs = {"in.wav"};
    report.output = "out.wav";
    report.format = {48000, 2, SampleFormat::kS16};
    report.duration = 12.5;
    report.elapsed = 0.25;
    report.loudnessBefore = -20.04;
    report.loudnessAfter = -21.04;
    report.peakBefore = -6.0;
    report.peakAfter = -7.5;
    report.levels = {-45.0, -64.5, -18.0, -18.25};
    report.settings = {3, 0.5F, true, true};
    report.record.processingRate = 32000;
    report.record.handOffs = 1250;
    report.music = 2.25;
    report.phaseCorrected = 1.5;
    return report;
}

/// With everything that is optional.
Report FullExample() {
    Report report = Example();
    report.inputs = {"in.wav", "bed.ogg"};
    report.conversions = {"bed.ogg: converted from 44100 Hz mono to 48000 Hz stereo"};
    report.record.events = {{0.0, 150001, "AP_DENOISE turn on"},
                            {3.5, 150002, "AP_DENOISE turn off"}};
    report.record.refused = {{"Process: 3", 2},
                             {"switching on AudioPhaseCheck: not initialised", 1}};
    return report;
}

std::string Table(const Report& report) {
    std::ostringstream out;
    PrintTable(out, report);
    return out.str();
}

nlohmann::json Json(const Report& report) {
    std::ostringstream out;
    PrintJson(out, report);
    return nlohmann::json::parse(out.str());
}

TEST(Report, TheTableShowsDurationSpeedLevelsAndProcessing) {
    EXPECT_EQ(Table(Example()),
              "in.wav -> out.wav\n"
              "12.50 s, 48000 Hz, stereo, 16-bit; 50 x real time\n"
              "                      before    after   change\n"
              "loudness      LUFS     -20.0    -21.0     -1.0\n"
              "noise floor   dBFS     -45.0    -64.5    -19.5\n"
              "speech        dBFS     -18.0    -18.2     -0.2\n"
              "peak          dBFS      -6.0     -7.5     -1.5\n"
              "phase check   on, left channel inverted for 1.50 s\n"
              "suppression   level 3, 1250 blocks resampled to 32000 Hz\n"
              "gain          0.50\n"
              "music         2.25 s\n");
}

TEST(Report, TheTableEndsWithEventsRefusalsAndConversions) {
    const std::string table = Table(FullExample());
    EXPECT_EQ(table.substr(0, 28), "in.wav + bed.ogg -> out.wav\n");
    EXPECT_EQ(table.substr(table.find("music")),
              "music         2.25 s\n"
              "event         0.000 s, 150001 AP_DENOISE turn on\n"
              "event         3.500 s, 150002 AP_DENOISE turn off\n"
              "refused       2 x Process: 3\n"
              "refused       1 x switching on AudioPhaseCheck: not initialised\n"
              "note          bed.ogg: converted from 44100 Hz mono to 48000 Hz stereo\n");
}

TEST(Report, TheJsonContainsTheSame) {
    const nlohmann::json json = Json(FullExample());
    EXPECT_EQ(json["inputs"], (nlohmann::json{"in.wav", "bed.ogg"}));
    EXPECT_EQ(json["output"], "out.wav");
    EXPECT_EQ(json["duration_s"], 12.5);
    EXPECT_EQ(json["sample_rate_hz"], 48000);
    EXPECT_EQ(json["channels"], 2);
    EXPECT_EQ(json["samples"], "16-bit");
    EXPECT_EQ(json["speed"], 50.0);
    EXPECT_EQ(json["loudness_lufs"]["before"], -20.04);
    EXPECT_EQ(json["loudness_lufs"]["change"], -1.0);
    EXPECT_EQ(json["noise_floor_dbfs"]["after"], -64.5);
    EXPECT_EQ(json["speech_dbfs"]["after"], -18.25);
    EXPECT_EQ(json["peak_dbfs"]["before"], -6.0);
    EXPECT_EQ(json["phase_check"], true);
    EXPECT_EQ(json["phase_corrected_s"], 1.5);
    EXPECT_EQ(json["denoise_level"], 3);
    EXPECT_EQ(json["gain"], 0.5);
    EXPECT_EQ(json["hand_offs"], 1250);
    EXPECT_EQ(json["processing_rate_hz"], 32000);
    EXPECT_EQ(json["music_s"], 2.25);
    ASSERT_EQ(json["events"].size(), 2U);
    EXPECT_EQ(json["events"][1]["time_s"], 3.5);
    EXPECT_EQ(json["events"][1]["code"], 150002);
    EXPECT_EQ(json["events"][1]["text"], "AP_DENOISE turn off");
    EXPECT_EQ(
        json["refused"],
        (nlohmann::json{{"Process: 3", 2}, {"switching on AudioPhaseCheck: not initialised", 1}}));
    EXPECT_EQ(json["notes"],
              nlohmann::json::array({"bed.ogg: converted from 44100 Hz mono to 48000 Hz stereo"}));
    EXPECT_EQ(json.size(), 21U) << "no further keys";
}

TEST(Report, WithoutEventsAndRefusalsTheJsonHasEmptyLists) {
    const nlohmann::json json = Json(Example());
    EXPECT_EQ(json["events"], nlohmann::json::array());
    EXPECT_EQ(json["refused"], nlohmann::json::object());
    EXPECT_EQ(json["notes"], nlohmann::json::array());
}

TEST(Report, SilenceAndKindsThatAreOffAreShownAsSuch) {
    Report report = Example();
    report.settings = {std::nullopt, std::nullopt, false, false};
    report.record.handOffs = 0;
    report.phaseCorrected = 0.0;
    report.loudnessBefore = report.loudnessAfter = -INFINITY;
    const std::string table = Table(report);
    EXPECT_NE(table.find("loudness      LUFS      -inf     -inf\n"), std::string::npos) << table;
    EXPECT_NE(table.find("phase check   off, left channel inverted for 0.00 s\n"
                         "suppression   off, 0 blocks resampled to 32000 Hz\n"
                         "gain          off\n"),
              std::string::npos)
        << table;
    const nlohmann::json json = Json(report);
    EXPECT_TRUE(json["loudness_lufs"]["before"].is_null());
    EXPECT_TRUE(json["loudness_lufs"]["change"].is_null());
    EXPECT_EQ(json["phase_check"], false);
    EXPECT_TRUE(json["denoise_level"].is_null());
    EXPECT_TRUE(json["gain"].is_null());
}

TEST(Report, SuppressionBelow32000HzComesWithANote) {
    Report report = Example();
    report.record.processingRate = 16000;
    EXPECT_NE(Table(report).find("note          the suppressor works at 32000 Hz; at 16000 Hz"),
              std::string::npos);
    EXPECT_EQ(Json(report)["notes"].size(), 1U);
    report.settings.denoiseLevel.reset();
    EXPECT_EQ(Json(report)["notes"].size(), 0U);
}

TEST(Report, APathThatIsNotUtf8StillMakesJson) {
    Report report = Example();
    report.inputs = {"caf\xe9.wav"};
    EXPECT_NE(Json(report)["inputs"][0], "");
}

}  // namespace
