// --loudness: the pass over the cleaned signal, in the command line.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "command_line_fixture.h"
#include "host/level_meter.h"
#include "host/loudness_pass.h"

namespace {

class LoudnessTest : public CommandLineTest {
protected:
    /// The summary of a run on the speech.
    nlohmann::json Clean(Words options) {
        options.insert(options.begin(), {"clean", Speech(), "--json", "-o", File("o.wav")});
        const Outcome outcome = RunHost(options);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return nlohmann::json::parse(outcome.out);
    }
};

/// A noise burst of 1 s with crests, at half of full scale.
std::vector<float> Crests() {
    std::vector<float> samples(48000);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double t = static_cast<double>(i) / 48000.0;
        samples[i] = static_cast<float>(0.05 * std::sin(6.283185307 * 997.0 * t));
    }
    // Around a quarter of the rate at 45 degrees, the true peak lies 3 dB above the samples.
    for (std::size_t i = 20000; i < 20400; ++i) {
        samples[i] = i % 4 < 2 ? 0.5F : -0.5F;
    }
    return samples;
}

template <typename Sample>
std::vector<Sample> Passed(LoudnessPass<Sample>& pass, const std::vector<Sample>& samples) {
    for (std::size_t i = 0; i < samples.size(); i += 480) {
        const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(i);
        pass.Add(std::vector<Sample>(begin, begin + 480));
    }
    pass.Finish();
    std::vector<Sample> out;
    for (std::vector<Sample> block = pass.Next(); !block.empty(); block = pass.Next()) {
        out.insert(out.end(), block.begin(), block.end());
    }
    return out;
}

TEST_F(LoudnessTest, TheOutputHasTheLoudnessAndIsTheCleanedSignalTimesAConstant) {
    const std::vector<short> plain = [&] {
        EXPECT_FALSE(Clean({}).contains("loudness_gain_db"));
        return ReadSound<short>(File("o.wav")).samples;
    }();
    for (const double target : {-30.0, -45.5}) {
        const nlohmann::json json = Clean({"--loudness", std::to_string(target)});
        EXPECT_NEAR(json["loudness_lufs"]["after"], target, 0.05);
        EXPECT_EQ(json["notes"].size(), 0U);
        const double factor = std::pow(10.0, json["loudness_gain_db"].get<double>() / 20.0);
        const std::vector<short> out = ReadSound<short>(File("o.wav")).samples;
        ASSERT_EQ(out.size(), plain.size());
        for (std::size_t i = 0; i < out.size(); ++i) {
            // The gain in the summary is rounded to 0.01 dB.
            ASSERT_NEAR(out[i], plain[i] * factor, 0.51 + std::abs(plain[i]) * factor * 0.0006)
                << i;
        }
    }
}

TEST_F(LoudnessTest, TheTruePeakStaysBelowMinus1dBTPInBothSampleFormats) {
    const AudioFormat format = {48000, 1, SampleFormat::kFloat};
    LoudnessPass<float> pass(format, -5.0, File("o.wav"));
    const std::vector<float> out = Passed(pass, Crests());
    EXPECT_NE(pass.Gain().note, "");
    LoudnessPass<float> again(format, -5.0, File("o.wav"));
    EXPECT_EQ(Passed(again, out).size(), out.size());
    EXPECT_LT(again.Gain().db, 0.001) << "the first pass has left no room";
    EXPECT_GT(again.Gain().db, -0.01) << "the true peak lies below -1 dBTP";
    const auto [lowest, highest] = std::minmax_element(out.begin(), out.end());
    EXPECT_LT(std::max(-*lowest, *highest), 0.7F) << "the samples lie 3 dB below the true peak";

    LoudnessPass<short> s16({48000, 1, SampleFormat::kS16}, -5.0, File("o.wav"));
    const std::vector<short> rounded = Passed(s16, As<short>(Crests()));
    LoudnessPass<short> s16Again({48000, 1, SampleFormat::kS16}, -5.0, File("o.wav"));
    Passed(s16Again, rounded);
    EXPECT_GT(s16Again.Gain().db, -0.01);
}

TEST(LoudnessPass, SoundInTheLastChannelAloneReachesTheLoudness) {
    for (const std::size_t channels : {7U, 8U}) {
        LoudnessPass<float> pass({48000, static_cast<int>(channels), SampleFormat::kFloat}, -30.0,
                                 "-");
        std::vector<float> samples(24000 * channels);
        for (std::size_t frame = 0; frame < 24000; ++frame) {
            const double t = static_cast<double>(frame) / 48000.0;
            samples[(frame + 1) * channels - 1] =
                static_cast<float>(0.1 * std::sin(6.283185307 * 997.0 * t));
        }
        LevelMeter meter({48000, static_cast<int>(channels), SampleFormat::kFloat});
        pass.Add(samples);
        meter.Add(samples);
        pass.Finish();
        // A side channel counts 1.5 dB more than a front channel.
        EXPECT_NEAR(meter.Loudness(), -23.0 + 1.5, 0.1) << channels;
        EXPECT_NEAR(pass.Gain().db, -30.0 - meter.Loudness(), 1e-6) << channels;
    }
}

TEST_F(LoudnessTest, SilenceStaysSilenceAndIsNoted) {
    WriteSound<short>(File("in.wav"),
                      {16000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, std::vector<short>(16000)});
    const Outcome outcome =
        RunHost({"clean", File("in.wav"), "-o", File("o.wav"), "--loudness", "-16"});
    EXPECT_NE(outcome.out.find("the loudness stays as it is"), std::string::npos) << outcome.out;
    EXPECT_EQ(ReadSound<short>(File("o.wav")).samples, std::vector<short>(16000));
}

TEST_F(LoudnessTest, NothingButTheOutputRemains) {
    Clean({"--loudness", "-20"});
    EXPECT_EQ(dir.Names().size(), 2U);
}

TEST_F(LoudnessTest, WithoutStatsNoLevelIsMeasuredAndNoTablePrinted) {
    const Outcome table = RunHost({"clean", Speech(), "-o", File("o.wav"), "--no-stats"});
    EXPECT_EQ(table.out, "");
    EXPECT_NE(table.progress.find("100%"), std::string::npos) << "but progress";
    const nlohmann::json json = Clean({"--no-stats", "--loudness", "-30"});
    EXPECT_FALSE(json.contains("loudness_lufs"));
    EXPECT_FALSE(json.contains("peak_dbfs"));
    EXPECT_EQ(json["duration_s"], 1.0);
    EXPECT_TRUE(json["loudness_gain_db"].is_number());
}

}  // namespace
