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
    report.settings = {{0.0, {2, 0.1F, PhaseMode::kFile, true, false}}};
    report.music = 2.25;
    report.phaseCorrected = 1.5;
    return report;
}

/// With everything that is optional.
Report FullExample() {
    Report report = Example();
    report.inputs = {"in.wav", "bed.ogg"};
    report.settings[0].settings.keepMusic = true;
    report.settings.push_back({3.5, {std::nullopt, std::nullopt, PhaseMode::kOff, false, false}});
    report.notices = {{1.0, "music begins"}, {3.25, "music ends"}};
    report.notes = {"bed.ogg: converted from 44100 Hz mono to 48000 Hz stereo"};
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
              "settings      suppression level 2, gain 0.10, phase check file\n"
              "phase         left channel inverted for 1.50 s\n");
}

TEST(Report, TheTableEndsWithChangesVerdictsAndNotes) {
    const std::string table = Table(FullExample());
    EXPECT_EQ(table.substr(0, 28), "in.wav + bed.ogg -> out.wav\n");
    EXPECT_EQ(table.substr(table.find("settings")),
              "settings      suppression level 2, gain 0.10, phase check file, music kept\n"
              "from 3.500 s  suppression off, gain off, phase check off, first source alone\n"
              "phase         left channel inverted for 1.50 s\n"
              "music         2.25 s\n"
              "at 1.000 s    music begins\n"
              "at 3.250 s    music ends\n"
              "note          bed.ogg: converted from 44100 Hz mono to 48000 Hz stereo\n");
}

TEST(Report, ControlCharactersInPathsDoNotReachTheTerminal) {
    Report report = FullExample();
    report.inputs = {"a\nb.wav"};
    report.output = "\x1b[31m.wav";
    report.notes = {"a\nb.wav: a remark"};
    const std::string table = Table(report);
    EXPECT_EQ(table.substr(0, table.find('\n')), "a?b.wav -> ?[31m.wav");
    EXPECT_NE(table.find("note          a?b.wav: a remark\n"), std::string::npos);
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
    EXPECT_EQ(json["phase_corrected_s"], 1.5);
    EXPECT_EQ(json["denoise_level"], 2);
    EXPECT_EQ(json["gain"].dump(), "0.1");
    EXPECT_EQ(json["phase_check"], "file");
    EXPECT_EQ(json["mix"], true);
    EXPECT_EQ(json["music"], "keep");
    EXPECT_EQ(json["music_s"], 2.25);
    EXPECT_EQ(json["changes"], nlohmann::json::parse(R"([{"time_s": 3.5, "denoise_level": null,
        "gain": null, "phase_check": "off", "mix": false, "music": "ignore"}])"));
    EXPECT_EQ(json["events"], nlohmann::json::parse(R"([{"time_s": 1.0, "text": "music begins"},
        {"time_s": 3.25, "text": "music ends"}])"));
    EXPECT_EQ(json["notes"],
              nlohmann::json::array({"bed.ogg: converted from 44100 Hz mono to 48000 Hz stereo"}));
    EXPECT_EQ(json.size(), 21U) << "no further keys";
}

TEST(Report, WithoutChangesAndVerdictsTheJsonHasEmptyLists) {
    const nlohmann::json json = Json(Example());
    EXPECT_EQ(json["events"], nlohmann::json::array());
    EXPECT_EQ(json["changes"], nlohmann::json::array());
    EXPECT_EQ(json["notes"], nlohmann::json::array());
}

TEST(Report, SilenceAndKindsThatAreOffAreShownAsSuch) {
    Report report = Example();
    report.settings = {{0.0, {std::nullopt, std::nullopt, PhaseMode::kOff, true, false}}};
    report.phaseCorrected = 0.0;
    report.loudnessBefore = report.loudnessAfter = -INFINITY;
    const std::string table = Table(report);
    EXPECT_NE(table.find("loudness      LUFS      -inf     -inf\n"), std::string::npos) << table;
    EXPECT_EQ(table.substr(table.find("settings")),
              "settings      suppression off, gain off, phase check off\n");
    const nlohmann::json json = Json(report);
    EXPECT_TRUE(json["loudness_lufs"]["before"].is_null());
    EXPECT_TRUE(json["loudness_lufs"]["change"].is_null());
    EXPECT_EQ(json["phase_check"], "off");
    EXPECT_TRUE(json["denoise_level"].is_null());
    EXPECT_TRUE(json["gain"].is_null());
}

TEST(Report, APathThatIsNotUtf8StillMakesJson) {
    Report report = Example();
    report.inputs = {"caf\xe9.wav"};
    EXPECT_NE(Json(report)["inputs"][0], "");
}

}  // namespace
