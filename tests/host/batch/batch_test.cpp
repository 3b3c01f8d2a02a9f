#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "host/command_line_fixture.h"

namespace {

namespace fs = std::filesystem;

class BatchTest : public CommandLineTest {
protected:
    BatchTest() {
        fs::create_directories(File("talks/day"));
        for (const char* name : {"talks/a.wav", "talks/b.flac", "talks/day/c.wav"}) {
            const int type = std::string(name).ends_with("flac") ? SF_FORMAT_FLAC : SF_FORMAT_WAV;
            Record<short>(name, type | SF_FORMAT_PCM_16, 16000, 1, 0.3);
        }
    }

    Outcome Clean(Words options) {
        options.insert(options.begin(),
                       {"clean", "-r", File("talks"), "--output-dir", File("out")});
        return RunHost(options);
    }

    static std::vector<nlohmann::json> Lines(const std::string& text) {
        std::vector<nlohmann::json> lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(nlohmann::json::parse(line));
        }
        std::sort(lines.begin(), lines.end(),
                  [](const auto& a, const auto& b) { return a["input"] < b["input"]; });
        return lines;
    }
};

TEST_F(BatchTest, EachFileIsCleanedAsIfItWereAlone) {
    const std::string bed = Speech("bed.wav");
    for (const char* jobs : {"1", "3"}) {
        const Outcome outcome = Clean({"-j", jobs, "--force", "--source", "1=" + bed});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        EXPECT_NE(outcome.progress.find("3/3"), std::string::npos);
        EXPECT_NE(outcome.out.find("3 files: 3 cleaned, 0 skipped, 0 failed"), std::string::npos);
        for (const std::string name : {"a.wav", "b.flac", "day/c.wav"}) {
            const std::string alone = File("alone" + fs::path(name).extension().string());
            ASSERT_EQ(RunHost({"clean", File("talks/" + name), "--source", "1=" + bed, "-o", alone})
                          .status,
                      0);
            EXPECT_TRUE(ReadFile(File("out/" + name)) == ReadFile(alone)) << name;
        }
    }
}

TEST_F(BatchTest, AFailureIsListedAndTheOthersAreCleaned) {
    WriteFile(File("talks/bad.wav"), "text");
    const Outcome outcome = Clean({"--json"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err,
              "audio-filter: " + File("talks/bad.wav") +
                  ": not a WAV, FLAC or Ogg file\naudio-filter: 1 of 4 files failed\n");
    const std::vector<nlohmann::json> lines = Lines(outcome.out);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0]["status"], "cleaned");
    EXPECT_EQ(lines[0]["output"], File("out/a.wav"));
    EXPECT_EQ(lines[0]["duration_s"], 0.3);
    EXPECT_EQ(lines[2]["status"], "failed");
    EXPECT_EQ(lines[2]["reason"], File("talks/bad.wav") + ": not a WAV, FLAC or Ogg file");
    EXPECT_FALSE(fs::exists(File("out/bad.wav")));
    EXPECT_TRUE(fs::exists(File("out/day/c.wav")));
}

TEST_F(BatchTest, WarningsNameTheirFile) {
    fs::resize_file(File("talks/a.wav"), 2000);
    const Outcome outcome = Clean({"--json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err.find("audio-filter: warning: " + File("talks/a.wav") + ": is cut off"),
              0U)
        << outcome.err;
    EXPECT_EQ(Lines(outcome.out)[0]["warnings"].size(), 1U);
    EXPECT_EQ(Lines(outcome.out)[1]["warnings"].size(), 0U);
}

TEST_F(BatchTest, ExistingOutputsAreKeptUnlessForcedAndSkippedOnDemand) {
    fs::create_directory(File("out"));
    WriteFile(File("out/a.wav"), "what was there");
    const Outcome kept = Clean({});
    EXPECT_EQ(kept.status, 1);
    EXPECT_NE(kept.err.find("a.wav exists\n"), std::string::npos) << kept.err;
    EXPECT_NE(kept.err.find("--skip-existing"), std::string::npos) << kept.err;
    EXPECT_EQ(ReadFile(File("out/a.wav")), "what was there");
    fs::remove(File("out/b.flac"));
    const Outcome resumed = Clean({"--skip-existing"});
    EXPECT_EQ(resumed.status, 0) << resumed.err;
    EXPECT_NE(resumed.out.find("1 cleaned, 2 skipped"), std::string::npos) << resumed.out;
    EXPECT_EQ(ReadFile(File("out/a.wav")), "what was there");
    EXPECT_EQ(Clean({"--force"}).status, 0);
    EXPECT_NE(ReadFile(File("out/a.wav")), "what was there");
}

TEST_F(BatchTest, ADryRunPrintsALineAFileAndWritesNothing) {
    fs::create_directory(File("out"));
    WriteFile(File("out/a.wav"), "");
    const Outcome outcome = Clean({"--dry-run", "--skip-existing"});
    EXPECT_EQ(outcome.status, 0);
    const std::string talks = File("talks/");
    const std::string out = File("out/");
    EXPECT_EQ(outcome.out, "skip  " + talks + "a.wav: " + out + "a.wav exists\nclean " + talks +
                               "b.flac -> " + out + "b.flac\nclean " + talks + "day/c.wav -> " +
                               out + "day/c.wav\n");
    EXPECT_FALSE(fs::exists(File("out/b.flac")));
    EXPECT_EQ(Lines(Clean({"-n", "--skip-existing", "--json"}).out)[1]["status"], "planned");
    const Outcome refused = Clean({"-n"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("a.wav exists\n"), std::string::npos);
}

TEST_F(BatchTest, OneLogHoldsTheLinesOfAllFilesWithTheirNames) {
    EXPECT_EQ(Clean({"--log", File("log"), "--jobs", "3"}).status, 0);
    const std::string log = ReadFile(File("log"));
    for (const std::string name : {"a.wav", "b.flac", "day/c.wav"}) {
        EXPECT_NE(log.find(File("talks/" + name) + ": audio-filter:0.000 s: suppression level 2"),
                  std::string::npos)
            << log;
    }
}

TEST_F(BatchTest, TheLogMayLieInTheOutputFolderThatIsYetToBeMade) {
    EXPECT_EQ(Clean({"--log", File("out/log.txt")}).status, 0);
    EXPECT_NE(ReadFile(File("out/log.txt")).find("a.wav: "), std::string::npos);
}

TEST_F(BatchTest, QuietPrintsOnlyProblems) {
    const Outcome outcome = Clean({"--quiet"});
    EXPECT_EQ(outcome.out + outcome.err + outcome.progress, "");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(Clean({"--quiet"}).err, "");
}

}  // namespace
