// The command line as a separate process: what only main does.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include "process.h"
#include "sound_files.h"
#include "support/temp_dir.h"

namespace {

using Words = std::vector<std::string>;

class ExecutableTest : public testing::Test {
protected:
    std::string Err() const { return logs.File("err"); }

    std::string Recording(std::size_t frames) {
        const std::string path = dir.File("in.wav");
        WriteSound<short>(path, {32000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, Ramp(frames)});
        return path;
    }

    TempDir dir;
    TempDir logs;
};

TEST_F(ExecutableTest, ASignalInMidStreamLeavesNoFileAndPrintsOneLine) {
    WriteHoursOfSilence(dir.File("in.wav"));
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        Process run({"clean", dir.File("in.wav"), "-o", dir.File("out.wav")}, "/dev/null", Err());
        while (dir.Names().size() < 2 && !run.HasEnded()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ASSERT_FALSE(run.HasEnded()) << run.Err();
        run.Signal(number);
        EXPECT_EQ(run.Wait(), 1) << number;
        EXPECT_EQ(run.Err(), "audio-filter: interrupted\n") << number;
        EXPECT_EQ(dir.Names(), Words{"in.wav"}) << number;
    }
}

TEST_F(ExecutableTest, ASignalInterruptsAReadFromAnIdlePipe) {
    ASSERT_EQ(mkfifo(logs.File("pipe").c_str(), 0666), 0);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        Process run({"clean", "-", "--raw", "s16:32000:1", "-o", dir.File("out.wav")}, "/dev/null",
                    Err(), RLIM_INFINITY, logs.File("pipe"));
        const int writer = open(logs.File("pipe").c_str(), O_WRONLY | O_CLOEXEC);
        ASSERT_EQ(write(writer, "12345678", 8), 8);
        for (int waiting = 1; waiting != 0 && !run.HasEnded();) {
            ioctl(writer, FIONREAD, &waiting);
        }
        // A signal may arrive just before the next read blocks: repeat it.
        while (!run.HasEnded()) {
            run.Signal(number);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        EXPECT_EQ(run.Wait(), 1) << number;
        EXPECT_EQ(run.Err(), "audio-filter: interrupted\n") << number;
        EXPECT_EQ(dir.Names(), Words()) << number;
        close(writer);
    }
}

TEST_F(ExecutableTest, AWriteBeyondTheFileSizeLimitFailsInsteadOfEndingTheProcess) {
    Process run({"clean", Recording(32000), "-o", dir.File("out.wav")}, "/dev/null", Err(), 20000);
    EXPECT_EQ(run.Wait(), 1);
    EXPECT_EQ(run.Err(), "audio-filter: " + dir.File("out.wav") + ": cannot be written\n");
    EXPECT_EQ(dir.Names(), Words{"in.wav"});
}

TEST_F(ExecutableTest, ASummaryThatCannotBePrintedIsReportedAndFails) {
    const std::string in = Recording(32000);
    for (const char* out : {"/dev/full", ""}) {
        for (const Words& words :
             {Words{"clean", in, "-o", dir.File("out.wav"), "--json"},
              Words{"clean", in, "-o", dir.File("out.wav")}, Words{"--help"}}) {
            Process run(words, out, Err());
            EXPECT_EQ(run.Wait(), 1) << out;
            EXPECT_EQ(run.Err(), "audio-filter: standard output cannot be written\n") << out;
        }
        Process quiet({"clean", in, "-o", dir.File("out.wav"), "--quiet"}, out, Err());
        EXPECT_EQ(quiet.Wait(), 0) << "there was nothing to print";
        EXPECT_EQ(quiet.Err(), "");
        Process bad({"clean", dir.File("none.wav"), "-o", dir.File("out.wav")}, out, Err());
        EXPECT_EQ(bad.Wait(), 1);
        const std::string err = bad.Err();
        EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
    }
}

TEST_F(ExecutableTest, WithoutATerminalNoProgressIsDrawn) {
    Process run({"clean", Recording(32000), "-o", dir.File("out.wav")}, logs.File("out"), Err());
    EXPECT_EQ(run.Wait(), 0);
    EXPECT_EQ(run.Err(), "");
    EXPECT_NE(ReadFile(logs.File("out")).find("noise floor"), std::string::npos);
}

TEST_F(ExecutableTest, OnATerminalProgressIsDrawn) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    ASSERT_EQ(fcntl(terminal, F_SETFL, O_NONBLOCK), 0);
    ASSERT_EQ(grantpt(terminal), 0);
    ASSERT_EQ(unlockpt(terminal), 0);
    const std::string name = ptsname(terminal);
    const int other = open(name.c_str(), O_RDWR | O_NOCTTY);  // keeps the output until it is read
    Process run({"clean", Recording(1600), "-o", dir.File("out.wav")}, "/dev/null", name);
    EXPECT_EQ(run.Wait(), 0);
    std::string drawn(4096, '\0');
    const ssize_t count = read(terminal, drawn.data(), drawn.size());
    ASSERT_GT(count, 0);
    EXPECT_NE(drawn.find('%'), std::string::npos);
    close(other);
    close(terminal);
}

}  // namespace
