#include "host/command_line.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/interrupt.h"
#include "sound_files.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

struct Outcome {
    int status;
    std::string out;
    std::string err;
    std::string progress;
};

Outcome RunHost(const Words& words) {
    std::vector<const char*> argv = {"audio-filter"};
    for (const std::string& word : words) {
        argv.push_back(word.c_str());
    }
    std::ostringstream out;
    std::ostringstream err;
    std::ostringstream progress;
    const int status =
        RunCommandLine(static_cast<int>(argv.size()), argv.data(), out, err, &progress);
    return {status, out.str(), err.str(), progress.str()};
}

class CommandLineTest : public testing::Test {
protected:
    std::string File(const std::string& name) { return dir.File(name); }

    template <typename Sample>
    std::string Record(const std::string& name, int format, int rate, int channels,
                       double seconds = 1.0) {
        const auto frames = static_cast<std::size_t>(seconds * rate);
        const std::vector<float> signal = Bursts(frames * static_cast<std::size_t>(channels), rate);
        WriteSound<Sample>(File(name), {rate, channels, format, As<Sample>(signal)});
        return File(name);
    }
    std::string Speech(const std::string& name = "in.wav", int rate = 32000) {
        return Record<short>(name, SF_FORMAT_WAV | SF_FORMAT_PCM_16, rate, 1);
    }

    TempDir dir;
};

TEST_F(CommandLineTest, BadInputGetsOneLineAndAStatusAndNoOutputFile) {
    const std::string good = Speech();
    const std::string stereo3 =
        Record<short>("three.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 32000, 3);
    WriteFile(File("text.wav"), "hello");
    WriteFile(File("empty.wav"), "");
    const std::string cut = Speech("cut.wav");
    fs::resize_file(cut, 30000);
    const std::string cutFlac =
        Record<short>("cut.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 32000, 1);
    fs::resize_file(cutFlac, fs::file_size(cutFlac) / 2);
    const std::string cutOgg = Record<short>("cut.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 32000, 1);
    fs::resize_file(cutOgg, fs::file_size(cutOgg) / 2);
    Record<short>("silent.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 32000, 1, 0.0);
    fs::create_directory(File("folder"));
    fs::create_directory(File("folder.wav"));
    fs::create_hard_link(good, File("same.wav"));
    fs::create_symlink(good, File("link.wav"));
    const std::string out = File("out.wav");

    struct Case {
        Words words;
        int status;
        std::string message;
    };
    const std::vector<Case> cases = {
        {{}, 2, "subcommand"},
        {{"tidy"}, 2, "subcommand"},
        {{"clean"}, 2, "IN"},
        {{"clean", good}, 2, "--output"},
        {{"clean", good, "-o"}, 2, "output"},
        {{"clean", good, good, "-o", out}, 2, "in.wav"},
        {{"clean", good, "-o", out, "--loud"}, 2, "--loud"},
        {{"clean", good, "-o", out, "--denoise", "4"}, 2, "4"},
        {{"clean", good, "-o", out, "--denoise", "-1"}, 2, "-1"},
        {{"clean", good, "-o", out, "--denoise", "1.5"}, 2, "1.5"},
        {{"clean", good, "-o", out, "--denoise", "much"}, 2, "much"},
        {{"clean", good, "-o", out, "--denoise", ""}, 2, "--denoise"},
        {{"clean", good, "-o", out, "--gain", "1.1"}, 2, "1.1"},
        {{"clean", good, "-o", out, "--gain", "nan"}, 2, "nan"},
        {{"clean", good, "-o", out, "--gain", "-0.5"}, 2, "-0.5"},
        {{"clean", good, "-o", out, "--gain", "0.5x"}, 2, "0.5x"},
        {{"clean", good, "-o", out, "--phase-check", "maybe"}, 2, "maybe"},
        {{"clean", good, "-o", out, "--block-ms", "0"}, 2, "0"},
        {{"clean", good, "-o", out, "--block-ms", "1001"}, 2, "1001"},
        {{"clean", good, "-o", out, "--block-ms", "ten"}, 2, "ten"},
        {{"clean", File("none.wav"), "-o", out}, 1, "none.wav: no such file"},
        {{"clean", File("folder"), "-o", out}, 1, "folder: not a regular file"},
        {{"clean", File("text.wav"), "-o", out}, 1, "text.wav: not a WAV, FLAC or Ogg file"},
        {{"clean", File("empty.wav"), "-o", out}, 1, "empty.wav: not a WAV, FLAC or Ogg file"},
        {{"clean", File("silent.wav"), "-o", out}, 1, "silent.wav: holds no audio"},
        {{"clean", stereo3, "-o", out}, 1, "three.wav: has 3 channels; one or two are taken"},
        {{"clean", cut, "-o", out}, 1, "cut.wav: is truncated"},
        {{"clean", cutFlac, "-o", out}, 1, "cut.flac: is truncated"},
        {{"clean", cutOgg, "-o", out}, 1, "cut.ogg: is truncated"},
        {{"clean", good, "-o", good}, 1, "in.wav: is the input itself"},
        {{"clean", good, "-o", File("same.wav")}, 1, "same.wav: is the input itself"},
        {{"clean", good, "-o", File("link.wav")}, 1, "link.wav: is the input itself"},
        {{"clean", good, "-o", File("no/such/out.wav")}, 1, "out.wav: cannot be written"},
        {{"clean", good, "-o", File("folder.wav")}, 1, "folder.wav: not a regular file"},
        {{"clean", good, "-o", File("out.mp3")}, 1, "out.mp3: the output is a .wav or .flac file"},
        {{"clean", good, "-o", File("out")}, 1, "out: the output is a .wav or .flac file"},
    };
    const Words before = dir.Names();
    const std::string original = ReadFile(good);
    for (const Case& c : cases) {
        std::string line = "audio-filter";
        for (const std::string& word : c.words) {
            line += " " + word;
        }
        for (const bool json : {false, true}) {
            Words words = c.words;
            if (json && !words.empty()) {
                words.insert(words.begin() + 1, "--json");
            }
            const Outcome outcome = RunHost(words);
            EXPECT_EQ(outcome.status, c.status) << line << "\n" << outcome.err;
            EXPECT_EQ(outcome.out, "") << line;
            EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
            EXPECT_EQ(outcome.err.substr(0, 14), "audio-filter: ") << line;
            if (!json) {
                EXPECT_NE(outcome.err.find(c.message), std::string::npos) << line << "\n"
                                                                          << outcome.err;
            }
            EXPECT_EQ(dir.Names().size(), before.size()) << line;
        }
    }
    EXPECT_EQ(ReadFile(good), original);
}

TEST_F(CommandLineTest, AFailureLeavesAnEarlierOutputAsItWas) {
    const std::string cut = Record<short>("cut.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 32000, 1);
    fs::resize_file(cut, fs::file_size(cut) / 2);
    WriteFile(File("out.wav"), "what was there");
    EXPECT_EQ(RunHost({"clean", cut, "-o", File("out.wav")}).status, 1);
    EXPECT_EQ(ReadFile(File("out.wav")), "what was there");
    EXPECT_EQ(dir.Names().size(), 2U);
}

TEST_F(CommandLineTest, AnUnwritableFolderIsSaidAndLeavesNothing) {
    if (geteuid() == 0) {
        // Root may write anywhere; a file in the place of a folder stops it all the same.
        WriteFile(File("folder"), "");
    } else {
        fs::create_directory(File("folder"));
        fs::permissions(File("folder"), fs::perms::owner_read | fs::perms::owner_exec);
    }
    const Outcome outcome = RunHost({"clean", Speech(), "-o", File("folder/out.wav")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("out.wav: cannot be written"), std::string::npos) << outcome.err;
}

TEST_F(CommandLineTest, AFullDiskIsSaidAndLeavesNothing) {
    const std::string in = Speech();
    const auto runOnFullDisk = [&](const std::string& out) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit small = {20000, 20000};
        setrlimit(RLIMIT_FSIZE, &small);
        const Outcome outcome = RunHost({"clean", in, "-o", out});
        std::cerr << outcome.err;
        std::exit(outcome.status);
    };
    EXPECT_EXIT(runOnFullDisk(File("out.wav")), testing::ExitedWithCode(1),
                "out.wav: cannot be written");
    EXPECT_EXIT(runOnFullDisk(File("out.flac")), testing::ExitedWithCode(1),
                "out.flac: cannot be written");
    EXPECT_EQ(dir.Names(), Words{"in.wav"});
}

TEST_F(CommandLineTest, AnInterruptIsSaidAndLeavesNothing) {
    const std::string in = Speech();
    const auto runInterrupted = [&] {
        NoteInterrupts();
        std::raise(SIGINT);
        const Outcome outcome = RunHost({"clean", in, "-o", File("out.wav")});
        std::cerr << outcome.err;
        std::exit(outcome.status);
    };
    EXPECT_EXIT(runInterrupted(), testing::ExitedWithCode(1), "audio-filter: interrupted");
    EXPECT_EQ(dir.Names(), Words{"in.wav"});
}

TEST_F(CommandLineTest, TheOutputHasTheInputsRateChannelsLengthAndKind) {
    struct Case {
        int inFormat;
        int rate;
        int channels;
        const char* out;
        int outFormat;
    };
    const int wav = SF_FORMAT_WAV;
    const int flac = SF_FORMAT_FLAC;
    const std::vector<Case> cases = {
        {wav | SF_FORMAT_PCM_16, 8000, 1, "o.wav", wav | SF_FORMAT_PCM_16},
        {wav | SF_FORMAT_PCM_16, 16000, 2, "o.flac", flac | SF_FORMAT_PCM_16},
        {wav | SF_FORMAT_PCM_16, 32000, 2, "o.wav", wav | SF_FORMAT_PCM_16},
        {wav | SF_FORMAT_PCM_16, 44100, 1, "o.wav", wav | SF_FORMAT_PCM_16},
        {wav | SF_FORMAT_PCM_16, 48000, 2, "o.wav", wav | SF_FORMAT_PCM_16},
        {wav | SF_FORMAT_PCM_16, 11025, 1, "o.wav", wav | SF_FORMAT_PCM_16},
        {wav | SF_FORMAT_PCM_U8, 22050, 1, "o.wav", wav | SF_FORMAT_PCM_16},
        {wav | SF_FORMAT_FLOAT, 48000, 1, "o.wav", wav | SF_FORMAT_FLOAT},
        {wav | SF_FORMAT_FLOAT, 32000, 2, "o.flac", flac | SF_FORMAT_PCM_24},
        {wav | SF_FORMAT_PCM_24, 96000, 2, "o.wav", wav | SF_FORMAT_FLOAT},
        {flac | SF_FORMAT_PCM_16, 44100, 2, "o.flac", flac | SF_FORMAT_PCM_16},
        {flac | SF_FORMAT_PCM_24, 32000, 1, "o.flac", flac | SF_FORMAT_PCM_24},
        {SF_FORMAT_OGG | SF_FORMAT_VORBIS, 44100, 2, "o.wav", wav | SF_FORMAT_PCM_16},
    };
    for (const Case& c : cases) {
        const std::string in = Record<float>("in", c.inFormat, c.rate, c.channels, 0.73);
        const Outcome outcome = RunHost({"clean", in, "-o", File(c.out)});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        const Sound<float> before = ReadSound<float>(in);
        const Sound<float> after = ReadSound<float>(File(c.out));
        const int container = after.format & SF_FORMAT_TYPEMASK;
        EXPECT_EQ(container == SF_FORMAT_WAVEX ? wav : container, c.outFormat & SF_FORMAT_TYPEMASK);
        EXPECT_EQ(after.format & SF_FORMAT_SUBMASK, c.outFormat & SF_FORMAT_SUBMASK) << c.rate;
        EXPECT_EQ(after.sampleRate, c.rate);
        EXPECT_EQ(after.channels, c.channels);
        EXPECT_EQ(after.samples.size(), before.samples.size()) << c.rate;
    }
}

TEST_F(CommandLineTest, WithEverythingOffTheSamplesAreUntouched) {
    const std::string in = Record<short>("in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 48000, 2);
    ASSERT_EQ(
        RunHost({"clean", in, "-o", File("o.wav"), "--denoise", "off", "--phase-check", "off"})
            .status,
        0);
    EXPECT_EQ(ReadSound<short>(File("o.wav")).samples, ReadSound<short>(in).samples);
}

TEST_F(CommandLineTest, TheBlockSizeDoesNotChangeTheOutput) {
    const std::string in = Speech();
    ASSERT_EQ(RunHost({"clean", in, "-o", File("a.wav"), "--gain", "0.5"}).status, 0);
    for (const char* ms : {"1", "7", "1000"}) {
        ASSERT_EQ(
            RunHost({"clean", in, "-o", File("b.wav"), "--gain", "0.5", "--block-ms", ms}).status,
            0);
        EXPECT_EQ(ReadFile(File("a.wav")), ReadFile(File("b.wav"))) << ms;
    }
}

TEST_F(CommandLineTest, EachOptionReachesItsUnit) {
    const std::string in = Speech();
    const auto cleaned = [&](Words options) {
        options.insert(options.begin(), {"clean", in, "-o", File("o.wav")});
        EXPECT_EQ(RunHost(options).status, 0);
        return ReadFile(File("o.wav"));
    };
    const std::string usual = cleaned({});
    EXPECT_EQ(usual, cleaned({"--denoise", "3", "--gain", "off", "--phase-check", "on"}));
    EXPECT_NE(usual, cleaned({"--denoise", "0"}));
    EXPECT_NE(usual, cleaned({"--denoise", "off"}));
    EXPECT_NE(usual, cleaned({"--gain", "0.5"}));
    EXPECT_NE(cleaned({"--gain", "1"}), cleaned({"--gain", "0.5"}));
    EXPECT_EQ(usual, cleaned({"--gain", "0"}));
}

TEST_F(CommandLineTest, AReversedLeftChannelIsTurnedRoundAndSaid) {
    std::vector<short> samples;
    for (const short sample : As<short>(Bursts(48000 * 4, 48000))) {
        samples.push_back(static_cast<short>(-sample));
        samples.push_back(sample);
    }
    WriteSound<short>(File("in.wav"), {48000, 2, SF_FORMAT_WAV | SF_FORMAT_PCM_16, samples});
    const Outcome outcome =
        RunHost({"clean", File("in.wav"), "-o", File("o.wav"), "--denoise", "off", "--json"});
    ASSERT_EQ(outcome.status, 0);
    const double corrected = nlohmann::json::parse(outcome.out)["phase_corrected_s"];
    EXPECT_GT(corrected, 1.0);
    EXPECT_LT(corrected, 4.0);
    const std::vector<short> out = ReadSound<short>(File("o.wav")).samples;
    EXPECT_EQ(out[0], samples[0]) << "before it is sure";
    EXPECT_EQ(out[out.size() - 2], out[out.size() - 1]) << "and after";
}

TEST_F(CommandLineTest, PrintsATableOrOneJsonObjectOrNothing) {
    const std::string in = Speech();
    const Outcome table = RunHost({"clean", in, "-o", File("o.wav")});
    EXPECT_NE(table.out.find("noise floor"), std::string::npos);
    EXPECT_NE(table.progress.find("100%"), std::string::npos);
    EXPECT_EQ(table.err, "");
    const Outcome json = RunHost({"clean", in, "-o", File("o.wav"), "--json"});
    EXPECT_TRUE(nlohmann::json::accept(json.out));
    const Outcome quiet = RunHost({"clean", in, "-o", File("o.wav"), "--quiet"});
    EXPECT_EQ(quiet.out + quiet.err + quiet.progress, "");
    EXPECT_EQ(quiet.status, 0);
    const Outcome both = RunHost({"clean", in, "-o", File("o.wav"), "--quiet", "--json"});
    EXPECT_TRUE(nlohmann::json::accept(both.out));
    EXPECT_EQ(both.progress, "");
}

TEST_F(CommandLineTest, HelpAndVersionGoToStandardOutputWithStatus0) {
    for (const Words& words : {Words{"--help"}, Words{"clean", "--help"}}) {
        const Outcome outcome = RunHost(words);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_NE(outcome.out.find("Usage: audio-filter"), std::string::npos);
        EXPECT_EQ(outcome.err, "");
    }
    EXPECT_EQ(RunHost({"--version"}).status, 0);
    EXPECT_EQ(RunHost({"--version"}).out.find("0."), 0U);
}

TEST_F(CommandLineTest, NoisySpeechComesOutWithItsFloor15dBLowerAndItsSpeechWithin3dB) {
    std::mt19937 random(3);
    std::normal_distribution<double> gauss(0.0, 0.004);
    std::vector<float> speech(32000 * 8);
    for (std::size_t i = 0; i < speech.size(); ++i) {
        const double t = static_cast<double>(i) / 32000.0;
        const double syllable = std::max(0.0, std::sin(6.283185307 * 4.0 * t));
        const double word = t > 2.0 && std::fmod(t, 2.0) < 1.0 ? syllable : 0.0;
        double voice = 0.0;
        for (int overtone = 1; overtone <= 20; ++overtone) {
            voice += std::sin(6.283185307 * (120.0 + 10.0 * std::sin(3.0 * t)) * overtone * t) /
                     overtone;
        }
        speech[i] = static_cast<float>(0.2 * word * voice + gauss(random));
    }
    WriteSound<short>(File("in.wav"),
                      {32000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, As<short>(speech)});
    const Outcome outcome = RunHost({"clean", File("in.wav"), "-o", File("o.wav"), "--json"});
    ASSERT_EQ(outcome.status, 0);
    const nlohmann::json json = nlohmann::json::parse(outcome.out);
    EXPECT_LT(json["noise_floor_dbfs"]["change"], -15.0);
    EXPECT_GT(json["speech_dbfs"]["change"], -3.0);
    EXPECT_LT(json["speech_dbfs"]["change"], 3.0);
}

}  // namespace
