// Usage errors, bad files and failures in mid-stream: each prints one line with the reason, returns
// a status and leaves no file.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "command_line_fixture.h"
#include "process.h"

namespace {

namespace fs = std::filesystem;

/// What happens during a run.
enum class When { kAsItIs, kDiskIsFull, kInterruptedHalfWay, kFifoClosesEarly, kReaderGoesAway };

struct BadInput {
    Words words;
    int status;
    std::string message;  ///< part of the line
    When when = When::kAsItIs;
};

class BadInputTest : public CommandLineTest {
protected:
    std::vector<BadInput> Cases() {
        const std::string good = Speech();
        const std::string nine =
            Record<short>("nine.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 32000, 9);
        WriteFile(File("text.wav"), "hello");
        WriteFile(File("empty.wav"), "");
        const std::string cut = Speech("cut.wav");
        fs::resize_file(cut, 30000);
        const std::string cutFlac =
            Record<short>("cut.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 32000, 1);
        fs::resize_file(cutFlac, fs::file_size(cutFlac) / 2);
        const std::string cutOgg =
            Record<short>("cut.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 32000, 1);
        fs::resize_file(cutOgg, fs::file_size(cutOgg) / 2);
        Record<short>("silent.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 32000, 1, 0.0);
        WriteFile(File("lies.wav"), WavHeader(64000) + std::string(32000, '\1'));
        WriteFile(File("rate0.wav"), WavHeader(32000, 0) + std::string(32000, '\1'));
        WriteFile(File("wide.wav"), WavHeader(12800, 32000, 64) + std::string(12800, '\1'));
        WriteHoursOfSilence(File("hours.wav"));
        mkfifo(File("fifo").c_str(), 0666);
        mkfifo(File("fifo.wav").c_str(), 0666);
        fs::create_directory(File("folder"));
        fs::create_directory(File("folder.wav"));
        fs::create_hard_link(good, File("same.wav"));
        fs::create_symlink(good, File("link.wav"));
        fs::create_symlink("out.wav", File("dangling"));
        const std::string out = File("out.wav");
        Words seventeen = {"mix", "-o", out};
        seventeen.insert(seventeen.end(), 17, good);
        const Words raw = {"clean", "-", "--raw", "s16:32000:2", "-o", out};
        return {
            {{}, 2, "subcommand"},
            {{"tidy"}, 2, "subcommand"},
            {{good}, 2, "did you mean 'audio-filter clean " + good + "'?"},
            {{"-o", out, good}, 2, "did you mean 'audio-filter clean -o"},
            {{"clean"}, 2, "--output"},
            {{"clean", "-o", out}, 2, "FILE"},
            {{"clean", good, File("same.wav"), "-o", out}, 2, "'audio-filter mix' or --source"},
            {{"clean", good, "-o", out, "--output-dir", File("folder")}, 2, "--output"},
            {{"clean", good, "-o", out, "--suffix", "x"}, 2, "--output"},
            {{"clean", good, "-o", out, "--recursive"}, 2, "--recursive: needs --output-dir"},
            {{"clean", good, "-o", out, "--jobs", "2"}, 2, "--jobs: needs --output-dir"},
            {{"clean", good, "-o", out, "--skip-existing"}, 2, "--skip-existing: needs"},
            {{"clean", good, "-o", out, "--dry-run"}, 2, "--dry-run: needs --output-dir"},
            {{"clean", good, "-o", out, "--to", "wav"}, 2, "--to: needs --output-dir"},
            {{"clean", "--output-dir", File("new")}, 2, "FILE"},
            {{"clean", "-", "--output-dir", File("new")}, 2, "standard input needs -o"},
            {{"clean", good, "--output-dir", File("new"), "--wav"}, 2, "--wav: needs -o"},
            {{"clean", good, "--output-dir", File("new"), "--raw", "s16:8000:1"}, 2, "--raw"},
            {{"clean", good, "--output-dir", File("new"), "--to", "amr"}, 2, "amr"},
            {{"clean", good, "--output-dir", File("new"), "--jobs", "0"}, 2, "--jobs"},
            {{"clean", good, "--output-dir", File("new"), "--force", "--no-clobber"}, 2, "--force"},
            {{"clean", good, "--output-dir", File("new"), "--source", "1=-"},
             2,
             "--source: a pipe"},
            {{"clean", good, "--suffix", "a/b"}, 2, "--suffix: contains a '/'"},
            {{"clean", good, File("link.wav"), "--output-dir", dir.File("")}, 1, "also an input"},
            {{"clean", good, "--output-dir", File("new"), "--log", good}, 1, "also an input"},
            {{"clean", File("folder"), "--recursive", "--suffix", "x"}, 1, "no recordings found"},
            {{"clean", good, "-o", File("same.wav"), "--no-clobber"}, 1, "same.wav"},
            {{"clean", good, "-o", out, "--loudness", "-4"}, 2, "-4"},
            {{"clean", good, "-o", out, "--loudness", "-71"}, 2, "-71"},
            {{"clean", good, "-o", out, "--loudness", "loud"}, 2, "loud"},
            {{"mix", good, "-o", out}, 2, "at least two sources"},
            {{"mix", good, File("same.wav")}, 2, "--output"},
            {{"clean", good}, 2, "--output"},
            {{"clean", good, "-o"}, 2, "output"},
            {{"clean", good, "-o", out, "--loud"}, 2, "--loud"},
            {{"clean", good, "-o", out, "--denoise", "4"}, 2, "4"},
            {{"clean", good, "-o", out, "--denoise", "-1"}, 2, "-1"},
            {{"clean", good, "-o", out, "--denoise", "1.5"}, 2, "1.5"},
            {{"clean", good, "-o", out, "--denoise", "much"}, 2, "much"},
            {{"clean", good, "-o", out, "--denoise", ""}, 2, "--denoise"},
            {{"clean", good, "-o", out, "--denoise", "0x2"}, 2, "0x2"},
            {{"clean", good, "-o", out, "--gain", "1e-50"}, 2, "1e-50"},
            {{"clean", good, "-o", out, "--gain", "1.1"}, 2, "1.1"},
            {{"clean", good, "-o", out, "--gain", "nan"}, 2, "nan"},
            {{"clean", good, "-o", out, "--gain", "-0.5"}, 2, "-0.5"},
            {{"clean", good, "-o", out, "--gain", "0.5x"}, 2, "0.5x"},
            {{"clean", good, "-o", out, "--phase-check", "maybe"}, 2, "maybe"},
            {{"clean", good, "-o", out, "--block-ms", "0"}, 2, "0"},
            {{"clean", good, "-o", out, "--block-ms", "1001"}, 2, "1001"},
            {{"clean", good, "-o", out, "--block-ms", "ten"}, 2, "ten"},
            {{"clean", good, "-o", out, "--block-ms", "random"}, 2, "random"},
            {{"clean", good, "-o", out, "--block-ms", "random:"}, 2, "random:"},
            {{"clean", good, "-o", out, "--block-ms", "random:-1"}, 2, "random:-1"},
            {{"clean", good, "-o", out, "--mix", "maybe"}, 2, "maybe"},
            {{"clean", good, "-o", out, "--at", "1s"}, 2, "1s"},
            {{"clean", good, "-o", out, "--at", "1s:"}, 2, "1s:"},
            {{"clean", good, "-o", out, "--at", "-1s:mix=on"}, 2, "-1s:mix=on"},
            {{"clean", good, "-o", out, "--at", "soon:mix=on"}, 2, "'soon' is not a time"},
            {{"clean", good, "-o", out, "--at", "1s:gain=2"}, 2, "1s:gain=2"},
            {{"clean", good, "-o", out, "--at", "1s:denoise=0x2"}, 2, "1s:denoise=0x2"},
            {{"clean", good, "-o", out, "--at", "1s:volume=1"}, 2, "1s:volume=1"},
            {{"clean", good, "-o", out, "--at", "1s:mix=on,"}, 2, "1s:mix=on,"},
            {{"clean", good, "-o", out, "--source", good}, 2, "in.wav"},
            {{"clean", good, "-o", out, "--source", "1="}, 2, "1="},
            {{"clean", good, "-o", out, "--source", "4=" + good}, 2, "4="},
            {{"clean", good, "-o", out, "--source", "speaker=" + good}, 2, "speaker="},
            {{"clean", good, "-o", out, "--source", "=" + good}, 2, "in.wav"},
            {{"clean", good, "-o", out, "--source", "1=" + File("none.wav")},
             1,
             "none.wav: no such"},
            {{"mix", good, File("none.wav"), "-o", out}, 1, "none.wav: no such file"},
            {{"mix", "--strict", good, cutFlac, "-o", out}, 1, "cut.flac: is truncated"},
            {{"mix", good, File("same.wav"), "-o", File("same.wav")}, 1, "is also an input"},
            {seventeen, 2, "16"},
            {{"clean", good, "-o", out, "--wav"}, 2, "--wav"},
            {{"clean", "-", "--source", "1=-", "-o", out}, 2, "standard input"},
            {{"mix", "-", "/dev/stdin", "-o", out}, 2, "standard input"},
            {{"mix", "-", "-", "-o", out, "--raw", "s16:32000:1"}, 2, "standard input"},
            {{"clean", "-", "-o", out, "--raw", "s24:32000:1"}, 2, "s24:32000:1"},
            {{"clean", "-", "-o", out, "--raw", "s16:32000"}, 2, "s16:32000"},
            {{"clean", "-", "-o", out, "--raw", "s16:0:1"}, 2, "s16:0:1"},
            {{"clean", "-", "-o", out, "--raw", "s16:32000:9"}, 2, "s16:32000:9"},
            {{"clean", good, "-o", out, "--raw", "wav"}, 2, "wav"},
            {{"clean", good, "-o", "-", "--json"}, 2, "--json"},
            {{"clean", good, "-o", out, "--log", File("no/such/log")},
             1,
             "log: cannot be written: No such file or directory"},
            {{"clean", good, "-o", out, "--log", File("folder")}, 1, "folder: not a regular file"},
            {{"clean", good, "-o", out, "--log", File("fifo")}, 1, "fifo: not a regular file"},
            {{"clean", good, "-o", out, "--log", "/dev/null"}, 1, "/dev/null: not a regular file"},
            {{"clean", good, "-o", out, "--log-level", "warn"}, 2, "--log"},
            {{"clean", good, "-o", out, "--log", "-", "--log-level", "all"}, 2, "all"},
            {{"clean", good, "-o", out, "--log", good}, 1, "in.wav: is also an input"},
            {{"clean", good, "-o", out, "--log", File("link.wav")},
             1,
             "link.wav: is also an input"},
            {{"clean", good, "-o", out, "--log", out}, 1, "out.wav: is also the output"},
            {{"clean", good, "-o", out, "--log", File("side"), "--spectrogram", File("./side")},
             1,
             "side: is named for two of --log"},
            {{"clean", good, "-o", out, "--log", File("dangling")},
             1,
             "dangling: is also the output"},
            {{"clean", good, "-o", out, "--log", File("folder/../out.wav")},
             1,
             "is also the output"},
            {{"clean", File("none.wav"), "-o", out}, 1, "none.wav: no such file"},
            {{"clean", File("folder"), "-o", out}, 1, "folder: not a regular file"},
            {{"clean", File("text.wav"), "-o", out}, 1, "text.wav: not a WAV, FLAC or Ogg file"},
            {{"clean", File("empty.wav"), "-o", out}, 1, "empty.wav: is empty"},
            {{"clean", File("silent.wav"), "-o", out}, 1, "silent.wav: contains no audio"},
            {{"clean", nine, "-o", out}, 1, "nine.wav: has 9 channels; at most 8 are supported"},
            {{"clean", "--strict", cut, "-o", out}, 1, "cut.wav: is truncated"},
            {{"clean", "--strict", cutFlac, "-o", out}, 1, "cut.flac: is truncated"},
            {{"clean", "--strict", cutOgg, "-o", out}, 1, "cut.ogg: is truncated"},
            {{"clean", good, "-o", good}, 1, "in.wav: is also an input"},
            {{"clean", good, "-o", File("same.wav")}, 1, "same.wav: is also an input"},
            {{"clean", good, "-o", File("link.wav")}, 1, "link.wav: is also an input"},
            {{"clean", good, "-o", File("no/such/out.wav")},
             1,
             "out.wav: cannot be written: No such file or directory"},
            {{"clean", good, "-o", File("folder.wav")}, 1, "folder.wav: not a regular file"},
            {{"clean", good, "-o", File("out.xyz")}, 1, "out.xyz: the output must be a"},
            {{"clean", good, "-o", File("out")}, 1, "out: the output must be a"},
            {{"clean", "--strict", File("lies.wav"), "-o", out}, 1, "lies.wav: is truncated"},
            {{"clean", File("rate0.wav"), "-o", out}, 1, "rate0.wav: not a WAV"},
            {{"clean", File("wide.wav"), "-o", out}, 1, "wide.wav: has 64 channels; at most 8"},
            {{"clean", good, "-o", File("fifo.wav")}, 1, "fifo.wav: not a regular file"},
            {{"clean", good, "-o", "/dev/full"}, 1, "/dev/full: the output must be a"},
            {{"clean", good, "-o", out},
             1,
             "out.wav: cannot be written: File too large",
             When::kDiskIsFull},
            {{"clean", good, "-o", File("out.flac")},
             1,
             "out.flac: cannot be written: File too large",
             When::kDiskIsFull},
            {{"clean", File("hours.wav"), "-o", out},
             -SIGINT,
             "interrupted",
             When::kInterruptedHalfWay},
            {raw, 1, "standard input: ends inside a frame of 4 bytes", When::kFifoClosesEarly},
            {{"clean", File("hours.wav"), "-o", "-"},
             1,
             "standard output: cannot be written",
             When::kReaderGoesAway},
        };
    }

    static Words Sorted(Words names) {
        std::sort(names.begin(), names.end());
        return names;
    }

    /// Runs the executable while something happens to it.
    Outcome RunWhile(const BadInput& c) {
        const bool full = c.when == When::kDiskIsFull;
        const bool fed = c.when == When::kFifoClosesEarly;
        const bool left = c.when == When::kReaderGoesAway;
        const std::size_t before = dir.Names().size();
        const std::string fifo = File("fifo");
        Process run(c.words, left ? fifo : "/dev/null", logs.File("err"),
                    full ? 20000 : RLIM_INFINITY, fed ? fifo : "/dev/null");
        if (fed) {
            std::ofstream(fifo) << std::string(1001, 'x');
        } else if (left) {
            char some[1000];
            std::ifstream(fifo).read(some, sizeof(some));
        } else if (c.when == When::kInterruptedHalfWay) {
            while (dir.Names().size() == before && !run.HasEnded()) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            run.Signal(SIGINT);
        }
        const int status = run.Wait();
        return {status, "", run.Err(), ""};
    }

    TempDir logs;
};

TEST_F(BadInputTest, PrintsOneLineReturnsAStatusAndLeavesNoOutput) {
    const std::vector<BadInput> cases = Cases();
    EXPECT_GE(cases.size(), 40U);
    const Words before = Sorted(dir.Names());
    const std::string original = ReadFile(File("in.wav"));
    for (const BadInput& c : cases) {
        std::string line = "audio-filter";
        for (const std::string& word : c.words) {
            line += " " + word;
        }
        for (const bool json : {false, true}) {
            BadInput run = c;
            if (json && !c.words.empty() && c.when != When::kReaderGoesAway) {
                run.words.insert(run.words.begin() + 1, "--json");
            }
            const Outcome outcome = c.when == When::kAsItIs ? RunHost(run.words) : RunWhile(run);
            EXPECT_EQ(outcome.status, c.status) << line << "\n" << outcome.err;
            EXPECT_EQ(outcome.out, "") << line;
            EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
            EXPECT_EQ(outcome.err.substr(0, 14), "audio-filter: ") << line;
            if (!json) {
                EXPECT_NE(outcome.err.find(c.message), std::string::npos) << line << "\n"
                                                                          << outcome.err;
            }
            EXPECT_EQ(Sorted(dir.Names()), before) << line;
        }
    }
    EXPECT_TRUE(ReadFile(File("in.wav")) == original);
}

}  // namespace
