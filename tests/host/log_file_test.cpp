#include "host/log_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "audio_filter/audio_filter.h"
#include "host/failure.h"
#include "support/temp_dir.h"

namespace {

TEST(LogFile, ContainsTheLinesWrittenDuringItsLifetimeUnderItsOwnName) {
    const TempDir dir;
    const std::string path = dir.File("filter.log");
    AudioFilter filter;
    {
        const LogFile log(path);
        ProcessSwitchMap switches = {{AP_GAIN, true}};
        filter.Init(32000, 1, SAMPLE_FMT_S16, &switches);
    }
    filter.Clear();
    EXPECT_EQ(dir.Names(), std::vector<std::string>{"filter.log"});
    const std::string text = ReadFile(path);
    EXPECT_NE(text.find("AP_GAIN turn on"), std::string::npos) << text;
    EXPECT_EQ(text.find("Audio filter is cleared"), std::string::npos)
        << "logged after its lifetime";
}

TEST(LogFile, TruncatesAnEarlierFile) {
    const TempDir dir;
    const std::string path = dir.File("filter.log");
    WriteFile(path, "what was there");
    { const LogFile log(path); }
    EXPECT_EQ(ReadFile(path).find("what was there"), std::string::npos);
    { const LogFile log(path); }
    EXPECT_EQ(dir.Names(), std::vector<std::string>{"filter.log"});
}

TEST(LogFile, DoesNotTouchAFileNamedAsAWriterWouldNameIt) {
    const TempDir dir;
    WriteFile(dir.File("take_0"), "a recording");
    ASSERT_EQ(mkfifo(dir.File("pipe_0").c_str(), 0600), 0);
    for (const char* name : {"take", "pipe"}) {
        const LogFile log(dir.File(name));
    }
    EXPECT_EQ(ReadFile(dir.File("take_0")), "a recording");
    EXPECT_EQ(dir.Names().size(), 4U);
}

TEST(LogFile, APipeAFolderOrADeviceIsRefusedAndUnchanged) {
    const TempDir dir;
    ASSERT_EQ(mkfifo(dir.File("pipe").c_str(), 0600), 0);
    std::filesystem::create_directory(dir.File("folder"));
    std::filesystem::create_symlink("/dev/full", dir.File("device"));
    for (const char* name : {"pipe", "folder", "device"}) {
        try {
            const LogFile log(dir.File(name));
            FAIL() << name;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.what(), dir.File(name) + ": not a regular file");
        }
    }
    EXPECT_TRUE(std::filesystem::is_fifo(dir.File("pipe")));
    EXPECT_TRUE(std::filesystem::is_symlink(dir.File("device")));
    EXPECT_EQ(dir.Names().size(), 3U);
}

TEST(LogFile, OnAFullDiskLinesAreLostAndTheFileExists) {
    const TempDir dir;
    const auto runOnFullDisk = [&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit none = {0, 0};
        setrlimit(RLIMIT_FSIZE, &none);
        {
            const LogFile log(dir.File("log"));
            AudioFilter filter;
        }
        std::_Exit(0);
    };
    EXPECT_EXIT(runOnFullDisk(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(dir.Names(), std::vector<std::string>{"log"});
    EXPECT_EQ(ReadFile(dir.File("log")), "");
}

TEST(LogFile, InAFolderThatIsRemovedLinesAreLostAndNoFileRemains) {
    const TempDir dir;
    std::filesystem::create_directory(dir.File("folder"));
    {
        const LogFile log(dir.File("folder/log"));
        std::filesystem::remove_all(dir.File("folder"));
        AudioFilter filter;
        EXPECT_TRUE(filter.Clear());
    }
    EXPECT_TRUE(dir.Names().empty());
}

TEST(LogFile, AnUnwritableFileIsAFailureAndNoFileRemains) {
    const TempDir dir;
    try {
        const LogFile log(dir.File("no/such/filter.log"));
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.what(), dir.File("no/such/filter.log") + ": cannot be written");
    }
    EXPECT_TRUE(dir.Names().empty());
}

}  // namespace
