// The command line with standard streams that are closed or end early.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>

#include "sound_files.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

class StandardStreams : public testing::Test {
protected:
    StandardStreams() {
        const std::vector<short> samples = Ramp(32000);
        WriteSound<short>(File("in.wav"), {32000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, samples});
        const auto* bytes = reinterpret_cast<const char*>(samples.data());
        WriteFile(File("in"), {bytes, 2 * samples.size()});
        fs::current_path(dir.File(""));
    }
    ~StandardStreams() override { fs::current_path(mBefore); }

    /// Runs a shell command in which `$clean` is the program with its subcommand.
    /// @return its exit status
    int Run(const std::string& line) {
        const std::string clean = "clean=\"'" AUDIO_FILTER_EXECUTABLE "' clean\"; ";
        return WEXITSTATUS(std::system((clean + "eval \"" + line + "\"").c_str()));
    }
    std::string File(const std::string& name) { return dir.File(name); }

    void ExpectNothingButLogLines(const std::string& name) {
        std::istringstream log(ReadFile(File(name)));
        int lines = 0;
        for (std::string line; std::getline(log, line); ++lines) {
            ASSERT_EQ(line.find("audio-filter:0.000 s: "), 0U) << line;
        }
        EXPECT_EQ(lines, 1);
    }

    TempDir dir;

private:
    fs::path mBefore = fs::current_path();
};

TEST_F(StandardStreams, WithoutStandardOutputTheLossOfSamplesIsReportedAndNoOtherFileIsWritten) {
    for (const char* in : {"- --raw s16:32000:1 <in", "in.wav", "in.wav <&-"}) {
        EXPECT_EQ(Run(std::string("$clean -o - --log log ") + in + " >&- 2>err"), 1) << in;
        EXPECT_EQ(ReadFile(File("err")),
                  "audio-filter: standard output: cannot be written: Bad file descriptor\n");
        ExpectNothingButLogLines("log");
    }
    EXPECT_EQ(ReadFile(File("in")).size(), 64000U);
}

TEST_F(StandardStreams, ClosedStandardStreamsChangeNeitherOutputNorLog) {
    ASSERT_EQ(Run("$clean in.wav -o expected.wav --quiet"), 0);
    const std::string expected = ReadFile(File("expected.wav"));
    for (const std::string closed :
         {"<&-", ">&-", "2>&-", "<&- >&-", "<&- 2>&-", ">&- 2>&-", "<&- >&- 2>&-"}) {
        EXPECT_EQ(Run("$clean in.wav -o out.wav --quiet --log log " + closed), 0) << closed;
        EXPECT_TRUE(ReadFile(File("out.wav")) == expected) << closed;
        ExpectNothingButLogLines("log");
        const bool lost = (" " + closed + " ").find(" >&- ") != std::string::npos;
        EXPECT_EQ(Run("$clean in.wav -o out.wav --log log >table " + closed), lost ? 1 : 0);
        EXPECT_TRUE(ReadFile(File("out.wav")) == expected) << closed;
    }
}

TEST_F(StandardStreams, WithoutStandardInputTheReadFailsAndNoFileRemains) {
    EXPECT_EQ(Run("$clean - --raw s16:32000:1 -o out.wav <&- 2>err"), 1);
    EXPECT_EQ(ReadFile(File("err")),
              "audio-filter: standard input: cannot be read: Is a directory\n");
    EXPECT_FALSE(fs::exists(File("out.wav")));
}

TEST_F(StandardStreams, APipeWhoseReaderClosesAfter100BytesIsReported) {
    ASSERT_EQ(mkfifo(File("pipe").c_str(), 0600), 0);
    // More than a pipe holds, so that the reader closes it before everything is written.
    WriteSound<short>(File("long.wav"), {32000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, Ramp(320000)});
    for (const char* in : {"long.wav", "- --raw s16:32000:1 </dev/zero"}) {
        EXPECT_EQ(Run(std::string("head -c 100 <pipe >/dev/null & $clean -o - --quiet ") + in +
                      " >pipe 2>err"),
                  1);
        EXPECT_EQ(ReadFile(File("err")),
                  "audio-filter: standard output: cannot be written: Broken pipe\n");
    }
}

TEST_F(StandardStreams, APipeThatClosesInsideAFrameIsReportedAndLeavesNoFile) {
    ASSERT_EQ(mkfifo(File("pipe").c_str(), 0600), 0);
    EXPECT_EQ(Run("head -c 4003 in >pipe & $clean - --raw s16:32000:2 -o out.wav <pipe 2>err"), 1);
    EXPECT_EQ(ReadFile(File("err")),
              "audio-filter: standard input: ends inside a frame of 4 bytes\n");
    EXPECT_FALSE(fs::exists(File("out.wav")));
    EXPECT_EQ(Run("head -c 4000 in >pipe & $clean - --raw s16:32000:2 --quiet -o out.wav <pipe"),
              0);
    EXPECT_EQ(ReadSound<short>(File("out.wav")).samples.size(), 2000U)
        << "an end between two frames";
}

TEST_F(StandardStreams, APipeInPlaceOfAnOutputIsRefusedWithoutBlocking) {
    ASSERT_EQ(mkfifo(File("pipe.wav").c_str(), 0600), 0);
    EXPECT_EQ(Run("$clean in.wav -o pipe.wav 2>err"), 1);
    EXPECT_EQ(ReadFile(File("err")), "audio-filter: pipe.wav: not a regular file\n");
    EXPECT_EQ(Run("$clean in.wav -o out.wav --log pipe.wav 2>err"), 1);
    EXPECT_EQ(ReadFile(File("err")), "audio-filter: pipe.wav: not a regular file\n");
    EXPECT_FALSE(fs::exists(File("out.wav")));
}

}  // namespace
