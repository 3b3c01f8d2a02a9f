#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "command_line_fixture.h"
#include "host/aligned_stream.h"

namespace {

namespace fs = std::filesystem;

TEST_F(CommandLineTest, AFailureLeavesAnEarlierOutputUnchanged) {
    const std::string cut = Record<short>("cut.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 32000, 1);
    fs::resize_file(cut, fs::file_size(cut) / 2);
    WriteFile(File("out.wav"), "what was there");
    EXPECT_EQ(RunHost({"clean", cut, "-o", File("out.wav"), "--strict"}).status, 1);
    EXPECT_EQ(ReadFile(File("out.wav")), "what was there");
    EXPECT_EQ(dir.Names().size(), 2U);
}

TEST_F(CommandLineTest, AnUnwritableFolderIsReportedAndNoFileRemains) {
    if (geteuid() == 0) {
        // Root may write anywhere, but not below a file in place of a folder.
        WriteFile(File("folder"), "");
    } else {
        fs::create_directory(File("folder"));
        fs::permissions(File("folder"), fs::perms::owner_read | fs::perms::owner_exec);
    }
    const Outcome outcome = RunHost({"clean", Speech(), "-o", File("folder/out.wav")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("out.wav: cannot be written"), std::string::npos) << outcome.err;
}

TEST_F(CommandLineTest, TheOutputHasTheInputsRateChannelsLengthAndSampleFormat) {
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
        {wav | SF_FORMAT_PCM_24, 96000, 2, "o.wav", wav | SF_FORMAT_PCM_24},
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
    for (const char* ms : {"1", "7", "1000", "random:1", "random:99"}) {
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
    EXPECT_EQ(usual, cleaned({"--denoise", "2", "--gain", "off", "--phase-check", "on"}));
    EXPECT_NE(usual, cleaned({"--denoise", "0"}));
    EXPECT_NE(usual, cleaned({"--denoise", "off"}));
    EXPECT_NE(usual, cleaned({"--gain", "0.5"}));
    EXPECT_NE(cleaned({"--gain", "1"}), cleaned({"--gain", "0.5"}));
    EXPECT_EQ(usual, cleaned({"--gain", "0"}));
}

TEST_F(CommandLineTest, AReversedLeftChannelIsInvertedAndReported) {
    std::vector<short> samples;
    for (const short sample : As<short>(Bursts(48000 * 4, 48000))) {
        samples.push_back(static_cast<short>(-sample));
        samples.push_back(sample);
    }
    WriteSound<short>(File("in.wav"), {48000, 2, SF_FORMAT_WAV | SF_FORMAT_PCM_16, samples});
    const auto corrected = [&](const std::string& mode) {
        const Outcome outcome = RunHost({"clean", File("in.wav"), "-o", File("o.wav"), "--denoise",
                                         "off", "--json", "--phase-check", mode});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return nlohmann::json::parse(outcome.out);
    };
    EXPECT_EQ(corrected("off")["phase_corrected_s"], 0.0);
    const nlohmann::json live = corrected("live");
    EXPECT_GT(live["phase_corrected_s"], 1.0);
    EXPECT_LT(live["phase_corrected_s"], 4.0);
    EXPECT_EQ(live["events"][0]["text"], "left channel reversed, inverted from here");
    std::vector<short> out = ReadSound<short>(File("o.wav")).samples;
    EXPECT_EQ(out[0], samples[0]) << "before the correction starts";
    EXPECT_EQ(out[out.size() - 2], out[out.size() - 1]) << "after it has started";
    EXPECT_EQ(corrected("file")["phase_corrected_s"], 4.0);
    out = ReadSound<short>(File("o.wav")).samples;
    for (std::size_t i = 0; i < out.size(); i += 2) {
        ASSERT_EQ(out[i], out[i + 1]) << "from the first frame on";
        ASSERT_EQ(out[i + 1], samples[i + 1]);
    }
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

/// Counts the writes that reach a stream.
class Writes : public std::streambuf {
public:
    int count = 0;

private:
    std::streamsize xsputn(const char*, std::streamsize size) override {
        count += size > 0 ? 1 : 0;
        return size;
    }
    int overflow(int) override {
        ++count;
        return 0;
    }
};

TEST_F(CommandLineTest, TheSummaryAndAMessageAreOneWriteEach) {
    const std::string in = Speech();
    const std::string cut = Speech("cut.wav");
    fs::resize_file(cut, 30000);
    const auto writesOf = [](const Words& words) {
        std::vector<const char*> argv = {"audio-filter"};
        for (const std::string& word : words) {
            argv.push_back(word.c_str());
        }
        Writes out;
        Writes err;
        std::ostream outStream(&out);
        std::ostream errStream(&err);
        RunCommandLine(static_cast<int>(argv.size()), argv.data(), outStream, errStream, {});
        return std::pair(out.count, err.count);
    };
    const std::string o = File("o.wav");
    EXPECT_EQ(writesOf({"clean", in, "-o", o}), std::pair(1, 0));
    EXPECT_EQ(writesOf({"clean", in, "-o", o, "--json"}), std::pair(1, 0));
    EXPECT_EQ(writesOf({"clean", cut, "-o", o, "--quiet"}), std::pair(0, 1));
    EXPECT_EQ(writesOf({"clean", File("none.wav"), "-o", o}), std::pair(0, 1));
    EXPECT_EQ(writesOf({"clean", in}), std::pair(0, 1));
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

TEST_F(CommandLineTest, NoisySpeechHasAFloor15dBLowerAndItsSpeechStaysWithin3dB) {
    std::mt19937 random(3);
    std::normal_distribution<double> gauss(0.0, 0.004);
    constexpr int kRate = 48000;
    std::vector<float> speech(kRate * 8);
    for (std::size_t i = 0; i < speech.size(); ++i) {
        const double t = static_cast<double>(i) / kRate;
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
                      {kRate, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, As<short>(speech)});
    const Outcome outcome =
        RunHost({"clean", File("in.wav"), "-o", File("o.wav"), "--json", "--denoise", "3"});
    ASSERT_EQ(outcome.status, 0);
    const nlohmann::json json = nlohmann::json::parse(outcome.out);
    EXPECT_LT(json["noise_floor_dbfs"]["change"], -15.0);
    EXPECT_GT(json["speech_dbfs"]["change"], -3.0);
    EXPECT_LT(json["speech_dbfs"]["change"], 3.0);
}

TEST_F(CommandLineTest, SeveralInputsAreConvertedToTheFormatOfTheFirstAndPaddedToTheLongest) {
    const std::string in = Speech();
    const std::string bed =
        Record<short>("bed.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 2, 2.0);
    const Outcome mixed =
        RunHost({"mix", in, bed, "-o", File("o.wav"), "--denoise", "off", "--json"});
    ASSERT_EQ(mixed.status, 0) << mixed.err;
    const nlohmann::json json = nlohmann::json::parse(mixed.out);
    EXPECT_EQ(json["inputs"], (nlohmann::json{in, bed}));
    EXPECT_EQ(json["notes"],
              nlohmann::json::array({bed + ": converted from 44100 Hz stereo to 32000 Hz mono"}));
    EXPECT_EQ(json["duration_s"], 2.0);
    const Sound<short> both = ReadSound<short>(File("o.wav"));
    EXPECT_EQ(both.sampleRate, 32000);
    EXPECT_EQ(both.channels, 1);
    EXPECT_EQ(both.samples.size(), 64000U);
    const std::vector<short> silence(32000);
    EXPECT_FALSE(std::equal(silence.begin(), silence.end(), both.samples.begin() + 32000));

    ASSERT_EQ(
        RunHost({"mix", in, bed, "-o", File("o.wav"), "--denoise", "off", "--mix", "off"}).status,
        0);
    std::vector<short> padded = ReadSound<short>(in).samples;
    padded.resize(64000);
    EXPECT_EQ(ReadSound<short>(File("o.wav")).samples, padded) << "the first source alone";
}

TEST_F(CommandLineTest, WithoutAMicrophoneAmongTheSourcesNothingIsSuppressed) {
    const std::string in = Speech();
    const auto cleaned = [&](const std::string& type) {
        const Outcome outcome =
            RunHost({"clean", "-o", File("o.wav"), "--source", type + "=" + in, "--quiet"});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return ReadSound<short>(File("o.wav")).samples;
    };
    const std::vector<short> untouched = ReadSound<short>(in).samples;
    EXPECT_EQ(cleaned("1"), untouched);
    EXPECT_EQ(cleaned("3"), untouched);
    EXPECT_NE(cleaned("microphone"), untouched);
    EXPECT_EQ(cleaned("microphone"), cleaned("0"));
}

TEST_F(CommandLineTest, ARepeatableOptionTakesOneWordAtATime) {
    const std::string in = Speech();
    EXPECT_EQ(RunHost({"clean", "--at", "0.1s:gain=0.5", in, "-o", File("a.wav")}).status, 0);
    EXPECT_EQ(RunHost({"clean", "--source", "1=" + in, in, "-o", File("a.wav")}).status, 0);
}

TEST_F(CommandLineTest, TheLastOfARepeatedOptionWinsAndListsGrow) {
    const std::string in = Speech();
    const auto cleaned = [&](Words options) {
        options.insert(options.begin(), {"clean", in, "-o", File("no/such/o.wav"), "-o",
                                         File("o.wav"), "--quiet", "--quiet"});
        const Outcome outcome = RunHost(options);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return ReadFile(File("o.wav"));
    };
    EXPECT_EQ(cleaned({"--denoise", "3", "--denoise", "off"}), cleaned({"--denoise", "off"}));
    EXPECT_EQ(cleaned({"--gain", "1", "--gain", "0.5"}), cleaned({"--gain", "0.5"}));
    EXPECT_EQ(cleaned({"--at", "0:denoise=off", "--at", "0:0.0:gain=0.5"}),
              cleaned({"--denoise", "off", "--gain", "0.5"}));
}

TEST_F(CommandLineTest, SettingsChangeAtTheGivenTimeAndTheSummaryShowsWhatWasInEffect) {
    for (const int rate : {32000, 48000}) {
        const std::string in = Speech("in.wav", rate);
        const Outcome outcome =
            RunHost({"clean", in, "-o", File("o.wav"), "--json", "--at", "0.75s:gain=off,denoise=3",
                     "--at", "0.25s:denoise=off", "--at", "0:denoise=1", "--at", "9s:denoise=0"});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        const nlohmann::json json = nlohmann::json::parse(outcome.out);
        EXPECT_EQ(json["denoise_level"], 1);
        ASSERT_EQ(json["changes"].size(), 2U);
        EXPECT_EQ(json["changes"][0]["time_s"], 0.25);
        EXPECT_TRUE(json["changes"][0]["denoise_level"].is_null());
        EXPECT_EQ(json["changes"][1]["denoise_level"], 3);
        EXPECT_EQ(json["phase_check"], "off") << "mono";
        EXPECT_EQ(json["notes"],
                  nlohmann::json::array({"the change at 9 s is beyond the end: not applied"}));
        const std::vector<short> before = ReadSound<short>(in).samples;
        const std::vector<short> after = ReadSound<short>(File("o.wav")).samples;
        ASSERT_EQ(after.size(), before.size());
        const auto at = [&](double seconds) { return static_cast<std::ptrdiff_t>(seconds * rate); };
        // A change is complete within two processing blocks and a crossfade.
        EXPECT_TRUE(std::equal(before.begin() + at(0.28), before.begin() + at(0.73),
                               after.begin() + at(0.28)));
        EXPECT_FALSE(std::equal(before.begin() + at(0.2), before.begin() + at(0.22),
                                after.begin() + at(0.2)));
        EXPECT_FALSE(std::equal(before.begin() + at(0.78), before.begin() + at(0.8),
                                after.begin() + at(0.78)));
    }
}

TEST_F(CommandLineTest, WithoutAMicrophoneTheSummarySaysThatNothingIsSuppressed) {
    const Outcome outcome =
        RunHost({"clean", "-o", File("o.wav"), "--source", "1=" + Speech(), "--json"});
    const nlohmann::json json = nlohmann::json::parse(outcome.out);
    EXPECT_TRUE(json["denoise_level"].is_null());
    EXPECT_EQ(json["notes"], nlohmann::json::array(
                                 {"no noise is suppressed: no microphone is among the sources"}));
}

TEST_F(CommandLineTest, AChannelOfStereoIsCleanedLikeAMonoFile) {
    const std::string mono = Speech();
    std::vector<short> samples;
    for (const short sample : ReadSound<short>(mono).samples) {
        samples.insert(samples.end(), {sample, sample});
    }
    WriteSound<short>(File("s.wav"), {32000, 2, SF_FORMAT_WAV | SF_FORMAT_PCM_16, samples});
    const auto cleaned = [&](const std::string& in) {
        EXPECT_EQ(RunHost({"clean", in, "-o", File("o.wav"), "--denoise", "0"}).status, 0);
        return ReadSound<short>(File("o.wav")).samples;
    };
    const std::vector<short> narrow = cleaned(mono);
    const std::vector<short> wide = cleaned(File("s.wav"));
    ASSERT_EQ(wide.size(), 2 * narrow.size());
    for (std::size_t i = 0; i < narrow.size(); ++i) {
        ASSERT_EQ(narrow[i], wide[2 * i]) << i;
    }
}

TEST_F(CommandLineTest, EveryRateFrom8000To192000HzIsCleanedWithoutDelayAndOthersAreRefused) {
    for (const int rate : {8000, 11025, 16000, 22050, 44100, 48000, 96000, 192000}) {
        const std::string in = Speech("in.wav", rate);
        ASSERT_EQ(RunHost({"clean", in, "-o", File("o.wav"), "--block-ms", "random:4"}).status, 0);
        const std::vector<float> before = ReadSound<float>(in).samples;
        const std::vector<float> after = ReadSound<float>(File("o.wav")).samples;
        ASSERT_EQ(after.size(), before.size());
        EXPECT_LE(std::abs(Lag(before, after, 20)), std::max(1, rate / 48000)) << rate;
    }
    for (const int rate : {7999, 192001}) {
        const Outcome outcome = RunHost({"clean", Speech("in.wav", rate), "-o", File("p.wav")});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err, "audio-filter: cannot process " + std::to_string(rate) +
                                   " Hz: the rate must be from 8000 to 192000 Hz\n");
        EXPECT_FALSE(std::filesystem::exists(File("p.wav")));
    }
}

TEST_F(CommandLineTest, SpeechThatBeginsAtOnceKeepsItsFirstSecondWithin1dB) {
    const std::vector<float> signal = Bursts(96000, 48000);
    const std::vector<float> speech(signal.begin() + 12000, signal.end());  // begins with a burst
    WriteSound<short>(File("in.wav"),
                      {48000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, As<short>(speech)});
    ASSERT_EQ(RunHost({"clean", File("in.wav"), "-o", File("o.wav")}).status, 0);
    const auto power = [](const std::vector<float>& samples) {
        double sum = 0.0;
        for (std::size_t i = 0; i < 12000; ++i) {
            sum += static_cast<double>(samples[i] * samples[i]);
        }
        return sum;
    };
    const double change = 10.0 * std::log10(power(ReadSound<float>(File("o.wav")).samples) /
                                            power(ReadSound<float>(File("in.wav")).samples));
    EXPECT_NEAR(change, 0.0, 1.0);
}

TEST_F(CommandLineTest, MusicIsKeptOnRequestAndItsTimeIsShown) {
    const auto cleaned = [&](const std::string& music) {
        const Outcome outcome =
            RunHost({"clean", File("in.wav"), "-o", File("o.wav"), "--music", music, "--json"});
        return nlohmann::json::parse(outcome.out);
    };
    // Steady noise passes for music.
    std::mt19937 random(5);
    std::normal_distribution<float> gauss(0.0F, 0.01F);
    std::vector<float> noise(48000 * 4);
    std::generate(noise.begin(), noise.end(), [&] { return gauss(random); });
    WriteSound<short>(File("in.wav"),
                      {48000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, As<short>(noise)});
    const nlohmann::json ignored = cleaned("ignore");
    EXPECT_EQ(ignored["music_s"], 0.0);
    EXPECT_LT(ignored["noise_floor_dbfs"]["change"], -14.0);
    const nlohmann::json kept = cleaned("keep");
    EXPECT_GT(kept["music_s"], 2.0);
    EXPECT_EQ(kept["events"][0]["text"], "music begins");
}

TEST_F(CommandLineTest, TheLogContainsSettingsAndVerdictsFromInfoOrTheGivenLevelOn) {
    const std::string in = Speech();
    const auto logOf = [&](const Words& options) {
        Words words = {"clean", in, "-o", File("o.wav"), "--log", File("log")};
        words.insert(words.end(), options.begin(), options.end());
        EXPECT_EQ(RunHost(words).status, 0);
        return ReadFile(File("log"));
    };
    const std::string usual = logOf({});
    EXPECT_EQ(dir.Names().size(), 3U);
    EXPECT_NE(usual.find("0.000 s: suppression level 2"), std::string::npos);
    EXPECT_EQ(usual.find("[DEBUG]"), std::string::npos);
    EXPECT_LT(std::count(usual.begin(), usual.end(), '\n'), 20) << "not one for each block";
    const std::string all = logOf({"--log-level", "debug"});
    EXPECT_NE(all.find("1.000 s: noise reduced by "), std::string::npos) << all;
    EXPECT_EQ(usual.find("reduced"), std::string::npos);
    EXPECT_EQ(logOf({"--log-level", "error"}), "");
}

TEST_F(CommandLineTest, ALogToStandardErrorTakesThePlaceOfTheProgressBar) {
    testing::internal::CaptureStderr();
    const Outcome outcome = RunHost({"clean", Speech(), "-o", File("o.wav"), "--log", "-"});
    EXPECT_NE(testing::internal::GetCapturedStderr().find("suppression level 2"),
              std::string::npos);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.progress, "");
}

/// Runs the executable with pipes for standard input and output.
class PipeTest : public CommandLineTest {
protected:
    int RunProgram(const std::string& words) {
        const std::string command = "cat '" + File("in") + "' | '" + AUDIO_FILTER_EXECUTABLE +
                                    "' " + words + " 2>'" + File("err") + "' >'" + File("out") +
                                    "'";
        return WEXITSTATUS(std::system(command.c_str()));
    }
    template <typename Sample>
    std::string BytesOfSound(const std::string& path) {
        const std::vector<Sample> samples = ReadSound<Sample>(path).samples;
        return {reinterpret_cast<const char*>(samples.data()), samples.size() * sizeof(Sample)};
    }

    /// The bytes of a file after a stream that has not seen its start before.
    template <typename Sample>
    std::string LiveStream(const std::string& path, int channels) {
        const Sound<Sample> sound = ReadSound<Sample>(path);
        const SampleFormat format = sizeof(Sample) == 2 ? SampleFormat::kS16 : SampleFormat::kFloat;
        audio_filter::StreamSettings settings;
        settings.phaseCheck = channels == 2;
        AlignedStream<Sample> stream({sound.sampleRate, channels, format}, 1, settings);
        std::string bytes;
        for (const std::vector<Sample>& part : {stream.Push(sound.samples), stream.Drain()}) {
            bytes.append(reinterpret_cast<const char*>(part.data()), part.size() * sizeof(Sample));
        }
        return bytes;
    }
};

TEST_F(PipeTest, RawSamplesThroughPipesAreProcessedLikeALiveStream) {
    struct Case {
        const char* raw;
        int rate;
        int channels;
        bool floats;
    };
    for (const Case& c :
         {Case{"s16:32000:1", 32000, 1, false}, Case{"s16:48000:2", 48000, 2, false},
          Case{"f32:44100:1", 44100, 1, true}}) {
        const int format = SF_FORMAT_WAV | (c.floats ? SF_FORMAT_FLOAT : SF_FORMAT_PCM_16);
        const std::string in = Record<float>("in.wav", format, c.rate, c.channels, 0.5);
        const auto bytes = [&](const std::string& path) {
            return c.floats ? BytesOfSound<float>(path) : BytesOfSound<short>(path);
        };
        const std::string live =
            c.floats ? LiveStream<float>(in, c.channels) : LiveStream<short>(in, c.channels);
        WriteFile(File("in"), bytes(in));
        const std::string raw = std::string(" --raw ") + c.raw;
        ASSERT_EQ(RunProgram("clean - -o -" + raw), 0) << ReadFile(File("err"));
        EXPECT_TRUE(ReadFile(File("out")) == live) << c.raw;
        EXPECT_NE(ReadFile(File("err")).find("- -> -\n"), std::string::npos)
            << "the table goes to the stream without samples";

        ASSERT_EQ(RunProgram("clean - --json -o '" + File("p.wav") + "'" + raw), 0);
        EXPECT_TRUE(nlohmann::json::accept(ReadFile(File("out"))));
        EXPECT_TRUE(bytes(File("p.wav")) == live) << c.raw;
        ASSERT_EQ(RunHost({"clean", in, "-o", File("o.wav")}).status, 0);
        ASSERT_EQ(RunProgram("clean '" + in + "' --quiet -o -" + raw), 0);
        EXPECT_TRUE(ReadFile(File("out")) == bytes(File("o.wav"))) << c.raw;
        EXPECT_EQ(ReadFile(File("err")), "");
    }
}

TEST_F(PipeTest, RawOutputHasTheFormatOfItsInputAndNoOther) {
    const std::string in = Speech("in.wav");
    WriteFile(File("in"), "");
    const std::string off = "clean '" + in + "' --denoise off --quiet -o -";
    ASSERT_EQ(RunProgram(off), 0);
    EXPECT_TRUE(ReadFile(File("out")) == BytesOfSound<short>(in));
    EXPECT_EQ(RunProgram(off + " --raw s16:48000:1"), 1);
    EXPECT_EQ(ReadFile(File("err")),
              "audio-filter: standard output: the result is s16:32000:1, not s16:48000:1\n");
    EXPECT_EQ(ReadFile(File("out")), "");
}

TEST_F(PipeTest, AnEmptyStreamOrAPartialFrameIsReportedAndLeavesNoFile) {
    for (const auto& [bytes, message] : std::vector<std::pair<std::size_t, std::string>>{
             {0, "audio-filter: -: contains no audio\n"},
             {4003, "audio-filter: standard input: ends inside a frame of 4 bytes\n"}}) {
        WriteFile(File("in"), std::string(bytes, 'x'));
        EXPECT_EQ(RunProgram("clean - --raw s16:32000:2 -o '" + File("o.wav") + "'"), 1);
        EXPECT_EQ(ReadFile(File("err")), message);
        EXPECT_EQ(ReadFile(File("out")), "");
        EXPECT_EQ(dir.Names().size(), 3U) << "only in, out and err";
    }
}

TEST_F(PipeTest, AFullDiskBehindStandardOutputIsReported) {
    WriteFile(File("in"), std::string(64000, 'x'));
    const std::string command = std::string("'") + AUDIO_FILTER_EXECUTABLE +
                                "' clean - -o - --raw s16:32000:1 <'" + File("in") + "' 2>'" +
                                File("err") + "' >/dev/full";
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
    EXPECT_EQ(ReadFile(File("err")),
              "audio-filter: standard output: cannot be written: No space left on device\n");
}

}  // namespace
