#include "host/report.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

Report Example() {
    Report report = {};
    report.input = "in.wav";
    report.output = "out.wav";
    report.format = {48000, 2, SampleKind::kS16};
    report.processingRate = 32000;
    report.duration = 12.5;
    report.elapsed = 0.25;
    report.loudnessBefore = -20.04;
    report.loudnessAfter = -21.04;
    report.peakBefore = -6.0;
    report.peakAfter = -7.5;
    report.levels = {-45.0, -64.5, -18.0, -18.25};
    report.settings = {3, 0.5F, true};
    report.phaseCorrected = 1.5;
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

TEST(Report, TheTableSaysDurationSpeedLevelsAndWhatWasDone) {
    EXPECT_EQ(Table(Example()),
              "in.wav -> out.wav\n"
              "12.50 s, 48000 Hz, stereo, 16-bit; processed at 32000 Hz, 50 x real time\n"
              "                      before    after   change\n"
              "loudness      LUFS     -20.0    -21.0     -1.0\n"
              "noise floor   dBFS     -45.0    -64.5    -19.5\n"
              "speech        dBFS     -18.0    -18.2     -0.2\n"
              "peak          dBFS      -6.0     -7.5     -1.5\n"
              "phase check   left channel turned round for 1.50 s\n"
              "suppression   level 3\n"
              "gain          0.50\n");
}

TEST(Report, TheJsonSaysTheSame) {
    const nlohmann::json json = Json(Example());
    EXPECT_EQ(json["input"], "in.wav");
    EXPECT_EQ(json["output"], "out.wav");
    EXPECT_EQ(json["duration_s"], 12.5);
    EXPECT_EQ(json["sample_rate_hz"], 48000);
    EXPECT_EQ(json["channels"], 2);
    EXPECT_EQ(json["samples"], "16-bit");
    EXPECT_EQ(json["processing_rate_hz"], 32000);
    EXPECT_EQ(json["speed"], 50.0);
    EXPECT_EQ(json["loudness_lufs"]["before"], -20.04);
    EXPECT_EQ(json["loudness_lufs"]["change"], -1.0);
    EXPECT_EQ(json["noise_floor_dbfs"]["after"], -64.5);
    EXPECT_EQ(json["speech_dbfs"]["after"], -18.25);
    EXPECT_EQ(json["peak_dbfs"]["before"], -6.0);
    EXPECT_EQ(json["phase_corrected_s"], 1.5);
    EXPECT_EQ(json["denoise_level"], 3);
    EXPECT_EQ(json["gain"], 0.5);
    EXPECT_EQ(json["notes"].size(), 0U);
}

TEST(Report, WhatIsOffOrSilentSaysSo) {
    Report report = Example();
    report.settings = {std::nullopt, std::nullopt, false};
    report.phaseCorrected.reset();
    report.loudnessBefore = report.loudnessAfter = -INFINITY;
    const std::string table = Table(report);
    EXPECT_NE(table.find("loudness      LUFS      -inf     -inf\n"), std::string::npos) << table;
    EXPECT_NE(table.find("phase check   off\nsuppression   off\ngain          off\n"),
              std::string::npos);
    const nlohmann::json json = Json(report);
    EXPECT_TRUE(json["loudness_lufs"]["before"].is_null());
    EXPECT_TRUE(json["loudness_lufs"]["change"].is_null());
    EXPECT_TRUE(json["phase_corrected_s"].is_null());
    EXPECT_TRUE(json["denoise_level"].is_null());
    EXPECT_TRUE(json["gain"].is_null());
}

TEST(Report, SuppressionBelow32000HzComesWithANote) {
    Report report = Example();
    report.processingRate = 16000;
    EXPECT_NE(Table(report).find("note"), std::string::npos);
    EXPECT_EQ(Json(report)["notes"].size(), 1U);
    report.settings.denoiseLevel.reset();
    EXPECT_EQ(Json(report)["notes"].size(), 0U);
}

TEST(Report, APathThatIsNotUtf8StillMakesJson) {
    Report report = Example();
    report.input = "caf\xe9.wav";
    EXPECT_NE(Json(report)["input"], "");
}

}  // namespace
