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

TEST_F(ExecutableTest, ASignalInMidStreamLeavesNoFilePrintsOneLineAndEndsTheProcess) {
    WriteHoursOfSilence(dir.File("in.wav"));
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        Process run({"clean", dir.File("in.wav"), "-o", dir.File("out.wav")}, "/dev/null", Err());
        while (dir.Names().size() < 2 && !run.HasEnded()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ASSERT_FALSE(run.HasEnded()) << run.Err();
        run.Signal(number);
        EXPECT_EQ(run.Wait(), -number);
        EXPECT_EQ(run.Err(), "audio-filter: interrupted\n") << number;
        EXPECT_EQ(dir.Names(), Words{"in.wav"}) << number;
    }
}

TEST_F(ExecutableTest, ASignalEndsABatchLeavesWholeFilesAndSaysHowManyAreDone) {
    WriteHoursOfSilence(dir.File("hours.wav"));
    const std::string out = logs.File("out");
    Process run(
        {"clean", Recording(3200), dir.File("hours.wav"), "--output-dir", out, "-j", "1", "--json"},
        logs.File("lines"), Err());
    const auto names = [&out] {
        Words found;
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(out, error)) {
            found.push_back(entry.path().filename());
        }
        return found;
    };
    while (names().size() < 2 && !run.HasEnded()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    run.Signal(SIGINT);
    EXPECT_EQ(run.Wait(), -SIGINT);
    EXPECT_EQ(run.Err(),
              "audio-filter: interrupted after 1 of 2 files; --skip-existing continues there\n");
    EXPECT_EQ(names(), Words{"in.wav"});
    const std::string lines = ReadFile(logs.File("lines"));
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 1) << lines;
}

/// Blocks until the reader has taken everything.
void WaitUntilEmpty(int pipe, Process& reader) {
    for (int waiting = 1; waiting != 0 && !reader.HasEnded();) {
        ioctl(pipe, FIONREAD, &waiting);
    }
}

TEST_F(ExecutableTest, ASignalBeforeTheFirstFrameOfAPipeLeavesNoFile) {
    ASSERT_EQ(mkfifo(logs.File("pipe").c_str(), 0666), 0);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        Process run({"clean", "-", "--raw", "s16:32000:1", "-o", dir.File("out.wav")}, "/dev/null",
                    Err(), RLIM_INFINITY, logs.File("pipe"));
        const int writer = open(logs.File("pipe").c_str(), O_WRONLY | O_CLOEXEC);
        ASSERT_EQ(write(writer, "1", 1), 1);
        WaitUntilEmpty(writer, run);
        run.Signal(number);
        EXPECT_EQ(run.Wait(), -number);
        EXPECT_EQ(run.Err(), "audio-filter: -: contains no audio\n");
        EXPECT_EQ(dir.Names(), Words());
        close(writer);
    }
}

TEST_F(ExecutableTest, ASignalCompletesALiveRecordingWithAllThatThePipeHolds) {
    ASSERT_EQ(mkfifo(logs.File("pipe").c_str(), 0666), 0);
    WriteHoursOfSilence(logs.File("bed.wav"));
    const std::vector<short> samples = Ramp(32000);
    const auto* bytes = reinterpret_cast<const char*>(samples.data());
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        for (const bool bed : {false, true}) {
            Words words = {"clean", "-", "--raw", "s16:32000:1", "--denoise", "off", "--quiet"};
            if (bed) {
                words.insert(words.end(),
                             {"--mix", "off", "--source", "1=" + logs.File("bed.wav")});
            }
            words.insert(words.end(), {"-o", dir.File("out.wav")});
            Process run(words, "/dev/null", Err(), RLIM_INFINITY, logs.File("pipe"));
            const int writer = open(logs.File("pipe").c_str(), O_WRONLY | O_CLOEXEC);
            ASSERT_EQ(write(writer, bytes, 32000), 32000);
            WaitUntilEmpty(writer, run);
            ASSERT_EQ(write(writer, bytes + 32000, 31999), 31999);  // ends inside a sample
            run.Signal(number);
            EXPECT_EQ(run.Wait(), -number);
            EXPECT_EQ(run.Err(), "");
            EXPECT_EQ(dir.Names(), Words{"out.wav"});
            EXPECT_EQ(ReadSound<short>(dir.File("out.wav")).samples, Ramp(31999));
            close(writer);
        }
    }
}

TEST_F(ExecutableTest, ASecondSignalGivesUpALiveRecordingWhoseReaderIsStuck) {
    ASSERT_EQ(mkfifo(logs.File("pipe").c_str(), 0666), 0);
    ASSERT_EQ(mkfifo(logs.File("out").c_str(), 0666), 0);
    const int keptOpen = open(logs.File("out").c_str(), O_RDWR | O_CLOEXEC);  // and never read
    Process run({"clean", "-", "--raw", "s16:32000:1", "-o", "-"}, logs.File("out"), Err(),
                RLIM_INFINITY, "/dev/zero");
    int written = 0;
    for (int before = -1; written == 0 || written != before;) {
        before = written;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        ioctl(keptOpen, FIONREAD, &written);
    }
    run.Signal(SIGTERM);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(run.HasEnded()) << "the samples are still to be written";
    run.Signal(SIGINT);
    EXPECT_EQ(run.Wait(), -SIGINT);
    EXPECT_EQ(run.Err(), "audio-filter: interrupted\n");
    close(keptOpen);
}

TEST_F(ExecutableTest, APipeIsBroughtToALoudnessLikeAFile) {
    const std::string in = Recording(32000);
    const std::vector<short> samples = Ramp(32000);
    WriteFile(logs.File("raw"),
              std::string(reinterpret_cast<const char*>(samples.data()), 2 * samples.size()));
    const Words options = {"--denoise", "off", "--loudness", "-30", "--quiet", "-o"};
    Words file = {"clean", in};
    Words pipe = {"clean", "-", "--raw", "s16:32000:1"};
    for (Words* words : {&file, &pipe}) {
        words->insert(words->end(), options.begin(), options.end());
    }
    file.push_back(dir.File("file.wav"));
    pipe.push_back(dir.File("pipe.wav"));
    EXPECT_EQ(Process(file, "/dev/null", Err()).Wait(), 0);
    EXPECT_EQ(Process(pipe, "/dev/null", Err(), RLIM_INFINITY, logs.File("raw")).Wait(), 0);
    const std::vector<short> result = ReadSound<short>(dir.File("file.wav")).samples;
    EXPECT_EQ(ReadSound<short>(dir.File("pipe.wav")).samples, result);
    EXPECT_NE(result, samples);
}

TEST_F(ExecutableTest, AWriteBeyondTheFileSizeLimitFailsInsteadOfEndingTheProcess) {
    Process run({"clean", Recording(32000), "-o", dir.File("out.wav")}, "/dev/null", Err(), 20000);
    EXPECT_EQ(run.Wait(), 1);
    EXPECT_EQ(run.Err(),
              "audio-filter: " + dir.File("out.wav") + ": cannot be written: File too large\n");
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
            const std::string cause =
                *out == '/' ? "No space left on device" : "Bad file descriptor";
            EXPECT_EQ(run.Err(),
                      "audio-filter: standard output cannot be written: " + cause + "\n");
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

TEST_F(ExecutableTest, WithoutATerminalAShortRunPrintsNoProgress) {
    Process run({"clean", Recording(32000), "-o", dir.File("out.wav")}, logs.File("out"), Err());
    EXPECT_EQ(run.Wait(), 0);
    EXPECT_EQ(run.Err(), "");
    EXPECT_NE(ReadFile(logs.File("out")).find("noise floor"), std::string::npos);
}

/// A terminal, whose output is read from the descriptor.
class Terminal {
public:
    Terminal() : mControl(posix_openpt(O_RDWR | O_NOCTTY)) {
        EXPECT_EQ(fcntl(mControl, F_SETFL, O_NONBLOCK), 0);
        EXPECT_EQ(grantpt(mControl), 0);
        EXPECT_EQ(unlockpt(mControl), 0);
        mName = ptsname(mControl);
        mKept = open(mName.c_str(), O_RDWR | O_NOCTTY);  // keeps the output until it is read
    }
    ~Terminal() {
        close(mKept);
        close(mControl);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    const std::string& Name() const { return mName; }
    int Control() const { return mControl; }
    std::string Output() const {
        std::string output(65536, '\0');
        const ssize_t count = read(mControl, output.data(), output.size());
        output.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return output;
    }

private:
    int mControl;
    int mKept;
    std::string mName;
};

TEST_F(ExecutableTest, SamplesAreNeitherWrittenToNorReadFromATerminal) {
    const Terminal terminal;
    const std::string in = Recording(32000);
    for (const Words& words :
         {Words{"clean", in, "-o", "-"}, Words{"clean", in, "--wav", "-o", "-"},
          Words{"clean", in, "-o", "/dev/stdout"}}) {
        Process run(words, terminal.Name(), Err());
        EXPECT_EQ(run.Wait(), 2);
        EXPECT_NE(run.Err().find("standard output is a terminal"), std::string::npos) << run.Err();
    }
    EXPECT_EQ(terminal.Output(), "");
    Process run({"clean", "-", "-o", dir.File("out.wav")}, "/dev/null", Err(), RLIM_INFINITY,
                terminal.Name());
    EXPECT_EQ(run.Wait(), 2);
    EXPECT_NE(run.Err().find("standard input is a terminal"), std::string::npos) << run.Err();
}

TEST_F(ExecutableTest, OnATerminalProgressIsDrawn) {
    const Terminal terminal;
    Process run({"clean", Recording(1600), "-o", dir.File("out.wav")}, "/dev/null",
                terminal.Name());
    EXPECT_EQ(run.Wait(), 0);
    EXPECT_NE(terminal.Output().find('%'), std::string::npos);
}

}  // namespace
