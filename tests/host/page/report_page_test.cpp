#include "host/page/report_page.h"

#include <gtest/gtest.h>

#include "host/command_line_fixture.h"

namespace {

class ReportPageTest : public CommandLineTest {
protected:
    /// Cleans a recording and returns the page about it.
    std::string PageOf(const std::string& recording, const Words& options = {}) {
        Words words = {"clean", recording, "-o", File("out.wav"), "--report", File("page.html")};
        words.insert(words.end(), options.begin(), options.end());
        const Outcome outcome = RunHost(words);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return ReadFile(File("page.html"));
    }
};

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST_F(ReportPageTest, APageHasThreeSoundsThreeSpectrogramsAndNoAddress) {
    const std::string page = PageOf(Speech("in.wav", 16000));
    std::size_t sounds = 0;
    std::size_t pictures = 0;
    for (std::size_t at = 0; (at = page.find(";base64,", at)) != std::string::npos; ++at) {
        sounds += page.compare(at - 9, 9, "audio/ogg") == 0 ? 1 : 0;
        pictures += page.compare(at - 9, 9, "image/png") == 0 ? 1 : 0;
    }
    EXPECT_EQ(sounds, 3U);
    EXPECT_EQ(pictures, 3U + 1U);  // and the legend
    EXPECT_FALSE(Contains(page, "http:"));
    EXPECT_FALSE(Contains(page, "https:"));
    EXPECT_FALSE(Contains(page, "url("));
    EXPECT_FALSE(Contains(page, "{{"));
}

TEST_F(ReportPageTest, AHostileFileNameIsText) {
    const std::string name = "<img src=x onerror=alert(1)>{{script}}'\"&.wav";
    const std::string page = PageOf(Speech(name, 16000));
    EXPECT_FALSE(Contains(page, "<img"));
    EXPECT_TRUE(Contains(page, "&lt;img src=x onerror=alert(1)&gt;{{script}}&#39;&quot;&amp;.wav"));
}

TEST_F(ReportPageTest, ThePolicyAllowsTheScriptOfThePageByItsHashOnly) {
    const std::string page = PageOf(Speech("in.wav", 16000));
    EXPECT_TRUE(Contains(page, "default-src 'none'"));
    EXPECT_TRUE(Contains(page, "script-src 'sha256-"));
    EXPECT_FALSE(Contains(page, "unsafe-inline"));
}

TEST_F(ReportPageTest, LevelsSettingsAndMarksAreWritten) {
    const std::string page =
        PageOf(Speech("in.wav", 16000), {"--at", "0.5:denoise=3", "--at", "9:gain=1"});
    EXPECT_TRUE(Contains(page, "noise floor (dBFS)"));
    EXPECT_TRUE(Contains(page, "0.5 s</th><td>settings: suppression level 3"));
    EXPECT_TRUE(Contains(page, "the change at 9 s is beyond the end"));
    EXPECT_TRUE(Contains(page, "The whole recording."));
}

TEST_F(ReportPageTest, AReversedChannelIsOnTheTimeLine) {
    const std::vector<float> mono = Bursts(48000, 16000);
    std::vector<short> stereo;
    for (const short sample : As<short>(mono)) {
        stereo.push_back(static_cast<short>(-sample));
        stereo.push_back(sample);
    }
    WriteSound<short>(File("reversed.wav"), {16000, 2, SF_FORMAT_WAV | SF_FORMAT_PCM_16, stereo});
    const std::string page = PageOf(File("reversed.wav"));
    EXPECT_TRUE(Contains(page, "0 s to 3 s: left channel inverted</title>"));
}

TEST_F(ReportPageTest, AFewFramesOfSilenceMakeAPage) {
    WriteSound<short>(File("short.wav"), {8000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16, {0, 0, 0}});
    EXPECT_TRUE(Contains(PageOf(File("short.wav")), "silence"));
}

TEST_F(ReportPageTest, ASpectrogramIsAPngFile) {
    const Outcome outcome = RunHost({"clean", Speech("in.wav", 16000), "-o", File("out.wav"),
                                     "--spectrogram", File("picture.png"), "--quiet"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(ReadFile(File("picture.png")).substr(0, 4), "\x89PNG");
}

TEST_F(ReportPageTest, ThePageDoesNotChangeTheOutput) {
    const std::string speech = Speech("in.wav", 16000);
    EXPECT_EQ(RunHost({"clean", speech, "-o", File("plain.wav")}).status, 0);
    PageOf(speech);
    EXPECT_EQ(ReadFile(File("out.wav")), ReadFile(File("plain.wav")));
}

TEST_F(ReportPageTest, APageThatWouldReplaceARecordingIsRefused) {
    const std::string speech = Speech("in.wav", 16000);
    const std::string before = ReadFile(speech);
    const Outcome input = RunHost({"clean", speech, "-o", File("out.wav"), "--report", speech});
    EXPECT_EQ(input.status, 1);
    EXPECT_TRUE(Contains(input.err, "is also an input")) << input.err;
    const Outcome output =
        RunHost({"clean", speech, "-o", File("out.wav"), "--spectrogram", File("out.wav")});
    EXPECT_EQ(output.status, 1);
    EXPECT_TRUE(Contains(output.err, "is also the output")) << output.err;
    EXPECT_EQ(ReadFile(speech), before);
    EXPECT_EQ(dir.Names(), std::vector<std::string>{"in.wav"});
}

TEST_F(ReportPageTest, AFailureLeavesNoPageAndKeepsAnOlderOne) {
    WriteFile(File("page.html"), "older");
    WriteFile(File("bad.wav"), WavHeader(0));
    const Outcome outcome =
        RunHost({"clean", File("bad.wav"), "-o", File("out.wav"), "--report", File("page.html")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(ReadFile(File("page.html")), "older");
    EXPECT_EQ(dir.Names().size(), 2U);
}

TEST_F(ReportPageTest, APageInAFolderThatDoesNotExistIsRefusedBeforeTheOutputIsWritten) {
    const Outcome outcome = RunHost({"clean", Speech("in.wav", 16000), "-o", File("out.wav"),
                                     "--report", File("no/page.html")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(dir.Names(), std::vector<std::string>{"in.wav"});
}

TEST_F(ReportPageTest, ThePageAndThePictureMustBeTwoFiles) {
    const Outcome outcome = RunHost({"clean", Speech("in.wav", 16000), "-o", File("out.wav"),
                                     "--report", File("page"), "--spectrogram", File("page")});
    EXPECT_EQ(outcome.status, 2);
}

TEST_F(ReportPageTest, TheGainOfALoudnessTargetIsStatedAndNotShown) {
    const std::string page = PageOf(Speech("in.wav", 16000), {"--loudness", "-30"});
    EXPECT_TRUE(Contains(page, "before its gain of "));
}

TEST_F(ReportPageTest, QuietAndNoStatsStillShowLevelsOnThePage) {
    const std::string page = PageOf(Speech("in.wav", 16000), {"--quiet", "--no-stats"});
    EXPECT_FALSE(Contains(page, "<td>0.0</td>"));
    EXPECT_TRUE(Contains(page, "noise floor (dBFS)"));
}

TEST_F(ReportPageTest, APageOfManyFilesIsRefused) {
    const Outcome outcome = RunHost(
        {"clean", Speech("in.wav", 16000), "--suffix", "-clean", "--report", File("page.html")});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(Contains(outcome.err, "show one output")) << outcome.err;
}

TEST_F(ReportPageTest, WithNoClobberAPageThatExistsIsKept) {
    WriteFile(File("page.html"), "older");
    const Outcome outcome = RunHost({"clean", Speech("in.wav", 16000), "-o", File("out.wav"),
                                     "--report", File("page.html"), "--no-clobber"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(ReadFile(File("page.html")), "older");
}

}  // namespace
