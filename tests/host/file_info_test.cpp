// audio-filter info.
#include "host/file_info.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "command_line_fixture.h"

namespace {

class FileInfoTest : public CommandLineTest {
protected:
    static nlohmann::json Info(const std::string& path, Words options = {}) {
        options.insert(options.begin(), {"info", path, "--json"});
        return nlohmann::json::parse(RunHost(options).out);
    }
};

TEST_F(FileInfoTest, ShowsWhatIsInAFileAndWhatCleaningDoes) {
    const std::string in = Record<float>("in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 16000, 2, 0.5);
    const Outcome outcome = RunHost({"info", in, "--denoise", "3"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(
        outcome.out,
        in +
            "\n"
            "  contents    WAV; 16000 Hz, stereo, 8000 frames, 0.50 s\n"
            "  libsndfile  WAV (Microsoft), Signed 24 bit PCM\n"
            "  settings    suppression level 3, gain off, phase check file\n"
            "  rate        noise suppressed at 32000 Hz, resampled from 16000 Hz, in blocks of 160 "
            "frames (10.0 ms)\n"
            "  latency     386 frames (24.1 ms), removed from the output\n"
            "  output      .wav unless another is named; 16000 Hz, stereo, float samples\n");
}

TEST_F(FileInfoTest, JsonIsOneLineAFile) {
    const std::string in = Speech("in.wav", 48000);
    const Outcome outcome = RunHost({"info", in, File("none.wav"), "--json"});
    EXPECT_EQ(outcome.status, 1);
    const std::size_t end = outcome.out.find('\n');
    const nlohmann::json first = nlohmann::json::parse(outcome.out.substr(0, end));
    EXPECT_EQ(first["container"], "WAV");
    EXPECT_EQ(first["frames"], 48000);
    EXPECT_EQ(first["duration_s"], 1.0);
    EXPECT_EQ(first["cleaning"]["latency_frames"], 517);
    EXPECT_EQ(first["cleaning"]["suppressor_rate_hz"], 48000);
    EXPECT_EQ(first["cleaning"]["settings"]["phase_check"], "off") << "mono";
    EXPECT_EQ(first["problem"], nullptr);
    const nlohmann::json second = nlohmann::json::parse(outcome.out.substr(end + 1));
    EXPECT_EQ(second["problem"], File("none.wav") + ": no such file");
    EXPECT_FALSE(second.contains("container"));
}

TEST_F(FileInfoTest, ACutFileHasAWarningInFlacOnlyAfterAScan) {
    const std::string wav = Speech();
    std::filesystem::resize_file(wav, 20000);
    EXPECT_EQ(Info(wav)["warnings"].size(), 1U);
    const std::string flac = Record<short>("in.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 32000, 1);
    std::filesystem::resize_file(flac, std::filesystem::file_size(flac) / 2);
    EXPECT_EQ(Info(flac)["frames"], 32000);
    const nlohmann::json scanned = Info(flac, {"--scan"});
    EXPECT_LT(scanned["frames"], 32000);
    EXPECT_EQ(scanned["warnings"].size(), 1U);
}

TEST_F(FileInfoTest, ARateThatCannotBeCleanedIsAProblem) {
    const std::string in = Speech("in.wav", 6000);
    const nlohmann::json info = Info(in);
    EXPECT_EQ(info["sample_rate_hz"], 6000);
    EXPECT_FALSE(info.contains("cleaning"));
    EXPECT_EQ(info["problem"], "cannot process 6000 Hz: the rate must be from 8000 to 192000 Hz");
}

}  // namespace
