#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>

#include "host/command_line_fixture.h"

namespace {

/// Sets environment variables, or removes them, until the end of a test.
class Environment {
public:
    ~Environment() {
        for (const auto& [name, value] : mBefore) {
            Put(name, value);
        }
    }

    void Set(const std::string& name, const std::optional<std::string>& value) {
        const char* const before = std::getenv(name.c_str());
        mBefore.emplace(name,
                        before == nullptr ? std::nullopt : std::optional<std::string>(before));
        Put(name, value);
    }

private:
    static void Put(const std::string& name, const std::optional<std::string>& value) {
        value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    }

    std::map<std::string, std::optional<std::string>> mBefore;
};

class MicrophoneCommandTest : public CommandLineTest {
protected:
    MicrophoneCommandTest() {
        environment.Set("XDG_CONFIG_HOME", File("config"));
        environment.Set("HOME", File("home"));
        environment.Set("LV2_PATH", File("other") + ":" + File("lv2"));
        environment.Set("PATH", File("bin") + ":/usr/bin:/bin");
        AddBundle(File("lv2"));
        PrintNodes(R"([{"info": {"props": {"node.name": "clean_microphone"}}}])");
    }

    static void AddBundle(const std::string& folder) {
        std::filesystem::create_directories(folder + "/audio_filter.lv2");
        WriteFile(folder + "/audio_filter.lv2/manifest.ttl", "");
        WriteFile(folder + "/audio_filter.lv2/audio_filter.so", "");
    }

    /// Puts a pw-dump that prints this before the system's.
    void PrintNodes(const std::string& dump) {
        std::filesystem::create_directories(File("bin"));
        WriteFile(File("bin/pw-dump"), "#!/bin/sh\necho '" + dump + "'\n");
        std::filesystem::permissions(File("bin/pw-dump"), std::filesystem::perms::owner_all);
    }

    static std::string Below(const std::string& config) {
        return config + "/pipewire/pipewire.conf.d/audio_filter-clean-microphone.conf";
    }
    std::string Installed() { return ReadFile(Below(File("config"))); }

    Environment environment;
};

TEST_F(MicrophoneCommandTest, InstallWritesTheFilterChainForTheUserAndSaysWhereAndWhatToDo) {
    const Outcome outcome = RunHost({"microphone", "install"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "installed: " + Below(File("config")) +
                               "\nplug-in:   " + File("lv2/audio_filter.lv2") +
                               "\nrestart PipeWire to apply it: systemctl --user restart pipewire\n"
                               "note: LV2_PATH is set here, and must be set for PipeWire, too\n");
    EXPECT_NE(Installed().find("plugin = \"urn:audio-filter:mono\""), std::string::npos);
    EXPECT_NE(Installed().find("control = { \"suppression\" = 2, \"gain_on\" = 0, \"gain\" = 0.5, "
                               "\"music_detection\" = 0 }\n"),
              std::string::npos);
    EXPECT_EQ(Installed().find("target.object"), std::string::npos);
}

TEST_F(MicrophoneCommandTest, InstallReplacesTheSettingsOfAnEarlierInstallation) {
    RunHost({"microphone", "install"});
    const Outcome outcome = RunHost({"microphone", "install", "--denoise", "off", "--gain", "0.25",
                                     "--music", "keep", "--from", "a \"b\"\\"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(
        Installed().find("control = { \"suppression\" = -1, \"gain_on\" = 1, \"gain\" = 0.25, "
                         "\"music_detection\" = 1 }\n"),
        std::string::npos)
        << Installed();
    EXPECT_NE(Installed().find("\n                target.object = \"a \\\"b\\\"\\\\\"\n"),
              std::string::npos)
        << Installed();
}

TEST_F(MicrophoneCommandTest, WithoutAnAbsoluteXdgConfigHomeItIsInstalledBelowHome) {
    for (const std::optional<std::string>& config :
         {std::optional<std::string>(), std::optional<std::string>("relative")}) {
        environment.Set("XDG_CONFIG_HOME", config);
        EXPECT_EQ(RunHost({"microphone", "install"}).status, 0);
        EXPECT_TRUE(std::filesystem::remove(Below(File("home/.config"))));
    }
    EXPECT_FALSE(std::filesystem::exists(File("config")));
    environment.Set("HOME", std::nullopt);
    const Outcome outcome = RunHost({"microphone", "install"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "audio-filter: neither XDG_CONFIG_HOME nor HOME is set\n");
}

TEST_F(MicrophoneCommandTest, WithoutThePlugInInstallSaysWhereItLookedAndWritesNothing) {
    std::filesystem::remove(File("lv2/audio_filter.lv2/audio_filter.so"));
    const Outcome outcome = RunHost({"microphone", "install"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "audio-filter: the LV2 plug-in audio_filter.lv2 is not in " +
                               File("other") + ", " + File("lv2") +
                               ": install it, or add its folder to LV2_PATH\n");
    EXPECT_FALSE(std::filesystem::exists(File("config")));
}

TEST_F(MicrophoneCommandTest, WithoutLv2PathThePlugInIsFoundInTheFolderOfTheUser) {
    environment.Set("LV2_PATH", std::nullopt);
    AddBundle(File("home/.lv2"));
    const Outcome outcome = RunHost({"microphone", "install"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("plug-in:   " + File("home/.lv2/audio_filter.lv2") + "\n"),
              std::string::npos)
        << outcome.out;
    EXPECT_EQ(outcome.out.find("LV2_PATH"), std::string::npos);
}

TEST_F(MicrophoneCommandTest, RemoveLeavesNothingAndMayBeRepeated) {
    RunHost({"microphone", "install"});
    Outcome outcome = RunHost({"microphone", "remove"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out,
              "removed: " + Below(File("config")) +
                  "\nrestart PipeWire to apply it: systemctl --user restart pipewire\n");
    EXPECT_TRUE(std::filesystem::is_empty(File("config/pipewire/pipewire.conf.d")));
    outcome = RunHost({"microphone", "remove"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "not installed: " + Below(File("config")) + "\n");
}

TEST_F(MicrophoneCommandTest, StatusShowsInstallationPlugInAndWhetherTheNodeRuns) {
    Outcome outcome = RunHost({"microphone", "status"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out.substr(0, 14), "installed: no\n");
    RunHost({"microphone", "install"});
    outcome = RunHost({"microphone", "status"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "installed: " + Below(File("config")) + "\nplug-in:   " +
                               File("lv2/audio_filter.lv2") + "\nrunning:   yes\n");
    PrintNodes(R"([{"info": {"props": {"node.name": "other"}}}, {"id": 1, "info": null}, 3])");
    EXPECT_NE(RunHost({"microphone", "status"}).out.find("running:   no: restart PipeWire\n"),
              std::string::npos);
    PrintNodes("");
    EXPECT_NE(RunHost({"microphone", "status"})
                  .out.find("running:   unknown: pw-dump does not reach PipeWire\n"),
              std::string::npos);
    std::filesystem::remove_all(File("lv2"));
    outcome = RunHost({"microphone", "status"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.out.find("\nplug-in:   not found: "), std::string::npos) << outcome.out;
}

TEST_F(MicrophoneCommandTest, AFolderThatCannotBeCreatedIsNamedWithItsCause) {
    WriteFile(File("config"), "");
    const Outcome outcome = RunHost({"microphone", "install"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "audio-filter: " + File("config/pipewire/pipewire.conf.d") +
                               ": cannot be created: Not a directory\n");
}

TEST_F(MicrophoneCommandTest, AMissingOrUnknownActionIsAUsageErrorInOneLine) {
    for (const Words& words : {Words{"microphone"}, Words{"microphone", "start"},
                               Words{"microphone", "install", "status"}}) {
        const Outcome outcome = RunHost(words);
        EXPECT_EQ(outcome.status, 2) << outcome.out;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }
    EXPECT_EQ(RunHost({"microphone"}).err,
              "audio-filter: ACTION: is required: install, remove or status\n");
    EXPECT_FALSE(std::filesystem::exists(File("config")));
}

}  // namespace
