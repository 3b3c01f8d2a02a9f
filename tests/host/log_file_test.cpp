#include "host/log_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "audio_filter/audio_filter.h"
#include "host/failure.h"
#include "log/pr_log.h"
#include "support/temp_dir.h"

namespace {

TEST(LogFile, ContainsTheLinesWrittenDuringItsLifetimeUnderItsOwnName) {
    const TempDir dir;
    const std::string path = dir.File("filter.log");
    AudioFilter filter;
    {
        const LogFile log(path, PROCESS_LOG_DEBUG);
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
    { const LogFile log(path, PROCESS_LOG_DEBUG); }
    EXPECT_EQ(ReadFile(path).find("what was there"), std::string::npos);
    { const LogFile log(path, PROCESS_LOG_DEBUG); }
    EXPECT_EQ(dir.Names(), std::vector<std::string>{"filter.log"});
}

TEST(LogFile, OnlyLinesFromTheGivenLevelOnAreWritten) {
    const TempDir dir;
    const auto linesAt = [&](ProcessLogLevel level) {
        {
            const LogFile log(dir.File("log"), level);
            pr_log->Debug("a", "%d", 1);
            pr_log->Info("b", "%d", 2);
            pr_log->Warn("c", "%d", 3);
            pr_log->Error("d", "%s", "4");
        }
        return ReadFile(dir.File("log"));
    };
    EXPECT_EQ(linesAt(PROCESS_LOG_DEBUG), "a:1\nb:2\nc:3\nd:4\n");
    EXPECT_EQ(linesAt(PROCESS_LOG_INFO), "b:2\nc:3\nd:4\n");
    EXPECT_EQ(linesAt(PROCESS_LOG_WARN), "c:3\nd:4\n");
    EXPECT_EQ(linesAt(PROCESS_LOG_ERROR), "d:4\n");
}

TEST(LogFile, TheLibrarysDispatcherIsInPlaceAgainAfterwards) {
    const TempDir dir;
    PRLog* const before = pr_log;
    {
        LogFile log(dir.File("log"), PROCESS_LOG_DEBUG);
        EXPECT_NE(pr_log, before);
        log.Close();
        EXPECT_EQ(pr_log, before);
    }
    EXPECT_EQ(pr_log, before);
    EXPECT_FALSE(pr_log_enalbe);
}

TEST(LogFile, ASymbolicLinkStaysAndItsTargetIsTruncatedAndWritten) {
    const TempDir dir;
    WriteFile(dir.File("target"), "what was there");
    std::filesystem::permissions(dir.File("target"), std::filesystem::perms(0600));
    std::filesystem::create_symlink("target", dir.File("link"));
    std::filesystem::create_symlink("new", dir.File("dangling"));
    for (const auto& [link, target] : {std::pair{"link", "target"}, std::pair{"dangling", "new"}}) {
        {
            const LogFile log(dir.File(link), PROCESS_LOG_INFO);
            pr_log->Info("line", "%d", 1);
        }
        EXPECT_TRUE(std::filesystem::is_symlink(dir.File(link)));
        EXPECT_FALSE(std::filesystem::is_symlink(dir.File(target)));
        EXPECT_EQ(ReadFile(dir.File(target)), "line:1\n");
    }
    EXPECT_EQ(std::filesystem::status(dir.File("target")).permissions(),
              std::filesystem::perms(0600));
}

TEST(LogFile, AMinusIsStandardErrorAndMakesNoFile) {
    const TempDir dir;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(dir.File(""));
    testing::internal::CaptureStderr();
    {
        LogFile log("-", PROCESS_LOG_INFO);
        pr_log->Info("line", "%d", 1);
        log.Close();
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "line:1\n");
    EXPECT_TRUE(dir.Names().empty());
    std::filesystem::current_path(before);
}

TEST(LogFile, APipeAFolderOrADeviceIsRefusedAndUnchanged) {
    const TempDir dir;
    ASSERT_EQ(mkfifo(dir.File("pipe").c_str(), 0600), 0);
    std::filesystem::create_directory(dir.File("folder"));
    std::filesystem::create_symlink("/dev/full", dir.File("device"));
    for (const char* name : {"pipe", "folder", "device"}) {
        try {
            const LogFile log(dir.File(name), PROCESS_LOG_INFO);
            FAIL() << name;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.what(), dir.File(name) + ": not a regular file");
        }
    }
    EXPECT_TRUE(std::filesystem::is_fifo(dir.File("pipe")));
    EXPECT_TRUE(std::filesystem::is_symlink(dir.File("device")));
    EXPECT_EQ(dir.Names().size(), 3U);
}

TEST(LogFile, AFullDiskIsAFailureAtTheEndWithItsCause) {
    const TempDir dir;
    const auto runOnFullDisk = [&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit none = {10, 10};
        setrlimit(RLIMIT_FSIZE, &none);
        LogFile log(dir.File("log"), PROCESS_LOG_DEBUG);
        pr_log->Info("line", "%d", 1);
        pr_log->Info("line", "%d", 2);
        try {
            log.Close();
        } catch (const Failure& failure) {
            std::_Exit(
                failure.what() == dir.File("log") + ": cannot be written: File too large" ? 0 : 2);
        }
        std::_Exit(1);
    };
    EXPECT_EXIT(runOnFullDisk(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(ReadFile(dir.File("log")).substr(0, 7), "line:1\n");
}

TEST(LogFile, InAFolderThatIsRemovedLinesAreLostAndNoFileRemains) {
    const TempDir dir;
    std::filesystem::create_directory(dir.File("folder"));
    {
        const LogFile log(dir.File("folder/log"), PROCESS_LOG_DEBUG);
        std::filesystem::remove_all(dir.File("folder"));
        AudioFilter filter;
        EXPECT_TRUE(filter.Clear());
    }
    EXPECT_TRUE(dir.Names().empty());
}

TEST(LogFile, AnUnwritableFileIsAFailureAndNoFileRemains) {
    const TempDir dir;
    try {
        const LogFile log(dir.File("no/such/filter.log"), PROCESS_LOG_DEBUG);
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.what(), dir.File("no/such/filter.log") +
                                      ": cannot be written: No such file or directory");
    }
    EXPECT_TRUE(dir.Names().empty());
}

}  // namespace
