#include "host/batch/batch_plan.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "host/failure.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using State = PlannedFile::State;

class BatchPlanTest : public testing::Test {
protected:
    std::string Make(const std::string& name) {
        fs::create_directories(fs::path(dir.File(name)).parent_path());
        WriteFile(dir.File(name), "bytes");
        return dir.File(name);
    }

    /// Its lines are "input > output" and "input: reason", with paths below the folder.
    std::vector<std::string> Plan() {
        std::vector<std::string> lines;
        for (const PlannedFile& file : PlanBatch(request)) {
            const bool cleans = file.state == State::kToClean;
            lines.push_back(Below(file.input) +
                            (cleans ? " > " + Below(file.output) : ": " + Below(file.reason)));
        }
        return lines;
    }

    std::string Why() {
        try {
            PlanBatch(request);
        } catch (const Failure& failure) {
            return Below(failure.what());
        }
        return "";
    }

    std::string Below(std::string text) const {
        for (std::size_t at = 0; (at = text.find(dir.File(""))) != std::string::npos;) {
            text.erase(at, dir.File("").size());
        }
        return text;
    }

    using Lines = std::vector<std::string>;
    TempDir dir;
    BatchRequest request;
};

TEST_F(BatchPlanTest, TheOutputFolderMirrorsTheFoldersOfTheInputs) {
    request = {.paths = {Make("a.wav"), dir.File("talks")},
               .recursive = true,
               .outputDir = dir.File("out")};
    Make("talks/b.flac");
    Make("talks/2024/c.amr");
    EXPECT_EQ(Plan(), (Lines{"a.wav > out/a.wav", "talks/2024/c.amr > out/2024/c.wav",
                             "talks/b.flac > out/b.flac"}));
    request.extension = "flac";
    request.suffix = "-clean";
    EXPECT_EQ(Plan()[0], "a.wav > out/a-clean.flac");
    EXPECT_EQ(PlanBatch(request)[0].bytes, 5);
    EXPECT_FALSE(fs::exists(dir.File("out")));
}

TEST_F(BatchPlanTest, OutputsBesideTheirInputsAreNoInputsOfALaterRun) {
    request = {.paths = {dir.File("talks")}, .recursive = true, .suffix = "-clean"};
    Make("talks/a.wav");
    Make("talks/a-clean.wav");
    EXPECT_EQ(Plan(), Lines{"talks/a.wav: talks/a-clean.wav exists"});
    request.paths = {dir.File("talks/a-clean.wav")};
    EXPECT_EQ(Plan(), Lines{"talks/a-clean.wav: has the suffix of outputs"});
    request.paths = {dir.File("talks")};
    request.outputDir = dir.File("talks/.");
    EXPECT_EQ(Plan(), Lines{"talks/a.wav: talks/./a-clean.wav exists"});
    request.outputDir = dir.File("out");
    EXPECT_EQ(Plan().size(), 2U) << "outputs elsewhere are no reason to leave a file out";
}

TEST_F(BatchPlanTest, AnOutputThatExistsIsAFailureUnlessItIsReplacedOrItsInputSkipped) {
    request = {.paths = {Make("a.wav")}, .outputDir = dir.File("out")};
    Make("out/a.wav");
    EXPECT_EQ(PlanBatch(request)[0].state, State::kFailed);
    EXPECT_EQ(Plan(), Lines{"a.wav: out/a.wav exists"});
    request.skipExisting = true;
    EXPECT_EQ(PlanBatch(request)[0].state, State::kSkipped);
    request.skipExisting = false;
    request.replace = true;
    EXPECT_EQ(Plan(), Lines{"a.wav > out/a.wav"});
}

TEST_F(BatchPlanTest, NamedPathsThatAreNoFilesFailAndTheOthersGoOn) {
    request = {.paths = {dir.File("none.wav"), dir.File("talks"), Make("a.wav"), "/dev/null"},
               .outputDir = dir.File("out")};
    Make("talks/b.wav");
    EXPECT_EQ(Plan(),
              (Lines{"none.wav: no such file", "talks: is a folder; --recursive cleans its files",
                     "a.wav > out/a.wav", "/dev/null: not a regular file"}));
}

TEST_F(BatchPlanTest, TwoInputsOfOneOutputAreRefusedAndAFileNamedTwiceIsCleanedOnce) {
    request = {.paths = {Make("x/a.wav"), Make("y/a.wav")}, .outputDir = dir.File("out")};
    EXPECT_EQ(Why(), "out/a.wav: would be the output of both x/a.wav and y/a.wav");
    request.paths = {Make("x/a.wav"), Make("x/a.amr")};
    EXPECT_EQ(Why(), "out/a.wav: would be the output of both x/a.wav and x/a.amr");
    fs::create_directory_symlink(dir.File("x"), dir.File("link"));
    request.paths = {dir.File("x/a.wav"), dir.File("x/../x/a.wav"), dir.File("link/a.wav")};
    EXPECT_EQ(Plan(), Lines{"x/a.wav > out/a.wav"});
}

TEST_F(BatchPlanTest, ReasonsAreOneLineWhateverTheNames) {
    request = {.paths = {Make("x/a\n.wav"), Make("y/a\n.wav")}, .outputDir = dir.File("out")};
    EXPECT_EQ(Why(), "out/a?.wav: would be the output of both x/a?.wav and y/a?.wav");
    request.paths.pop_back();
    Make("out/a\n.wav");
    EXPECT_EQ(PlanBatch(request)[0].reason, dir.File("out/a?.wav exists"));
}

TEST_F(BatchPlanTest, TwoNamesOfOneOutputAreRefused) {
    request = {
        .paths = {Make("a.wav"), Make("b.wav")}, .outputDir = dir.File("out"), .replace = true};
    Make("out/a.wav");
    fs::create_symlink("a.wav", dir.File("out/b.wav"));
    EXPECT_EQ(Why(), "out/b.wav: would be the output of both a.wav and b.wav");
}

TEST_F(BatchPlanTest, AnOutputThatIsAlsoAnInputIsRefused) {
    request = {
        .paths = {Make("a.wav"), Make("sub/b.wav")}, .outputDir = dir.File("sub"), .replace = true};
    Make("sub/a.wav");
    EXPECT_EQ(Why(), "sub/b.wav: is also an input");
    request.paths = {dir.File("a.wav")};
    EXPECT_EQ(Why(), "");
    request.paths = {dir.File("a.wav"), Make("a.flac")};
    request.outputDir = dir.File("");
    request.extension = "wav";
    EXPECT_NE(Why(), "");
}

}  // namespace
