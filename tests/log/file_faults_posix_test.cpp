// File writers on full disks, in folders that vanish and beside another process, and console writers
// without standard output.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "common/result_code.h"
#include "fake_wall_clock.h"
#include "log/media_process_log.h"
#include "log/pr_console_log_writer.h"
#include "log/pr_file_log_writer.h"
#include "log/pr_log.h"
#include "open_files.h"
#include "support/posix/full_disk.h"
#include "support/temp_dir.h"
#include "variable_arguments.h"

using namespace audio_filter::internal;

namespace {

namespace fs = std::filesystem;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

class FileFaultsPosix : public testing::Test {
protected:
    FileFaultsPosix() { TheWallClock() = {}; }
    ~FileFaultsPosix() override { EXPECT_EQ(OpenFileCount(), mOpen) << "files left open"; }

    std::string LastLine(const std::string& name) {
        const std::string text = ReadFile(dir.File(name));
        return text.size() < 2 ? text : text.substr(text.rfind('\n', text.size() - 2) + 1);
    }

    TempDir dir;

private:
    long mOpen = OpenFileCount();
};

TEST_F(FileFaultsPosix, OnADeviceThatIsAlwaysFull1000LinesAreLostWithoutAnError) {
    ASSERT_TRUE(fs::is_character_file("/dev/full"));
    fs::create_symlink("/dev/full", dir.File("log_0"));
    PRLog log;
    PRFileLogParam param = {dir.File("log"), 1, 0};
    const int id = log.AddLog(PROCESS_LOG_FILE, &param, 1);
    MediaProcessLog lines;
    EXPECT_EQ(lines.Init(PROCESS_LOG_DEBUG, dir.File("log_0")), RESULT_OK);
    const std::string text(100, 'x');
    for (int i = 0; i < 1000; ++i) {
        log.Error("p", "%d %s", i, text.c_str());
        ASSERT_EQ(lines.WriteLog(PROCESS_LOG_ERROR, "%d %s", i, text.c_str()), RESULT_OK);
    }
    EXPECT_EQ(log.mWriters[0]->WriteLog(4, "p", "m", nullptr), RESULT_OK) << "the stream is open";
    EXPECT_EQ(log.RemoveLog(id), RESULT_OK);
    EXPECT_TRUE(lines.Uninit());
    EXPECT_TRUE(fs::is_symlink(dir.File("log_0")));
}

TEST_F(FileFaultsPosix, OnceThereIsSpaceAgainLinesAreWrittenAgain) {
    PRFileLogWriter writer(1);
    PRFileLogParam param = {dir.File("log"), 1, 0};
    ASSERT_EQ(writer.Init(&param), RESULT_OK);
    MediaProcessLog lines;
    ASSERT_EQ(lines.Init(PROCESS_LOG_DEBUG, dir.File("lines")), RESULT_OK);
    const std::string text(100, 'x');
    {
        const FullDisk disk(5000);
        for (int i = 0; i < 200; ++i) {
            ASSERT_EQ(WriteTo(writer, 4, "p", "%s", text.c_str()), RESULT_OK);
            ASSERT_EQ(lines.WriteLog(PROCESS_LOG_ERROR, "%s", text.c_str()), RESULT_OK);
        }
        EXPECT_EQ(fs::file_size(dir.File("log_0")), 5000U);
        EXPECT_EQ(fs::file_size(dir.File("lines")), 5000U);
    }
    for (int i = 0; i < 2; ++i) {  // the first ends a line that the full disk cut
        EXPECT_EQ(WriteTo(writer, 4, "p", "space again"), RESULT_OK);
        EXPECT_EQ(lines.WriteLog(PROCESS_LOG_ERROR, "space again"), RESULT_OK);
    }
    EXPECT_EQ(LastLine("log_0"), "p:space again\n");
    EXPECT_EQ(LastLine("lines"), "space again\n");
}

TEST_F(FileFaultsPosix, AFullDiskDoesNotKeepAFileFromBeingReplacedOrClosed) {
    PRFileLogWriter writer(1);
    PRFileLogParam param = {dir.File("log"), 0, 1};
    ASSERT_EQ(writer.Init(&param), RESULT_OK);
    const FullDisk disk(0);
    EXPECT_EQ(WriteTo(writer, 4, "p", "lost"), RESULT_OK);
    for (int i = 0; i < 20; ++i) {
        TheWallClock().seconds += 2;
        TheWallClock().local.second = 10 + i;
        EXPECT_EQ(WriteTo(writer, 4, "p", "lost"), RESULT_OK);
    }
    EXPECT_EQ(dir.Names().size(), 21U);
}

TEST_F(FileFaultsPosix, AnOpenFileMovesWithItsFolderAndLosesLinesOnceTheFolderIsRemoved) {
    fs::create_directory(dir.File("folder"));
    PRFileLogWriter writer(1);
    PRFileLogParam param = {dir.File("folder/log"), 1, 0};
    ASSERT_EQ(writer.Init(&param), RESULT_OK);
    MediaProcessLog lines;
    ASSERT_EQ(lines.Init(PROCESS_LOG_DEBUG, dir.File("folder/lines")), RESULT_OK);
    fs::rename(dir.File("folder"), dir.File("moved"));
    EXPECT_EQ(WriteTo(writer, 4, "p", "m"), RESULT_OK);
    EXPECT_EQ(lines.WriteLog(PROCESS_LOG_ERROR, "m"), RESULT_OK);
    EXPECT_EQ(ReadFile(dir.File("moved/log_0")), "p:m\n");
    EXPECT_EQ(ReadFile(dir.File("moved/lines")), "m\n");
    fs::remove_all(dir.File("moved"));
    EXPECT_EQ(WriteTo(writer, 4, "p", "m"), RESULT_OK);
    EXPECT_EQ(lines.WriteLog(PROCESS_LOG_ERROR, "m"), RESULT_OK);
    EXPECT_TRUE(dir.Names().empty());
}

TEST_F(FileFaultsPosix, ANewFileInAMissingFolderFailsWithAMessageUntilTheFolderIsBack) {
    fs::create_directory(dir.File("folder"));
    PRFileLogWriter writer(1);
    PRFileLogParam param = {dir.File("folder/log"), 0, 1};
    ASSERT_EQ(writer.Init(&param), RESULT_OK);
    fs::remove_all(dir.File("folder"));
    TheWallClock().seconds += 2;
    CaptureStderr();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(WriteTo(writer, 4, "p", "lost"), RESULT_FAILURE);
    }
    const std::string line =
        "could not open log file " + dir.File("folder/log_2024_03_07_09_05_02_041");
    EXPECT_EQ(GetCapturedStderr(), line + line + line);
    fs::create_directory(dir.File("folder"));
    EXPECT_EQ(WriteTo(writer, 4, "p", "found"), RESULT_OK);
    EXPECT_EQ(ReadFile(dir.File("folder/log_2024_03_07_09_05_02_041")), "p:found\n");
    MediaProcessLog lines;
    EXPECT_EQ(lines.Init(PROCESS_LOG_DEBUG, dir.File("none/lines")), RESULT_OK);
    EXPECT_EQ(lines.WriteLog(PROCESS_LOG_ERROR, "lost"), RESULT_NOT_INITIALISED);
}

/// Runs `work` in a child process. @return its exit status, or minus the signal that ended it
int InAProcess(const std::function<int()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(work());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST_F(FileFaultsPosix, ConsoleWritersWithoutStandardOutputAndErrorLoseTheirLines) {
    EXPECT_EQ(InAProcess([] {
                  close(STDOUT_FILENO);
                  close(STDERR_FILENO);
                  PRLog log;
                  for (int type : {0, 1, 2}) {
                      PRConsoleLogParam param = {type};
                      log.AddLog(PROCESS_LOG_CONSOLE, &param, 1);
                  }
                  for (int i = 0; i < 1000; ++i) {
                      log.Error("p", "%d", i);
                  }
                  return log.mWriters[0]->WriteLog(4, "p", "m", nullptr) +
                         log.mWriters[1]->WriteLog(4, "p", "m", nullptr);
              }),
              0);
}

/// The later open truncates, and both processes then write at the same offsets. All lines have the
/// same length, so each stays whole.
TEST_F(FileFaultsPosix, TwoProcessesWithOnePrefixInTheSameMillisecondOverwriteWholeLines) {
    constexpr int kLines = 500;
    const auto write = [this](const char* name) {
        PRFileLogWriter writer(1);
        PRFileLogParam param = {dir.File("log"), 0, 60};
        int failed = writer.Init(&param);
        for (int i = 0; i < kLines; ++i) {
            failed += WriteTo(writer, 4, name, "%04d", i);
        }
        return failed == 0 ? 0 : 1;
    };
    const pid_t other = fork();
    if (other == 0) {
        _exit(write("one"));
    }
    EXPECT_EQ(InAProcess([&] { return write("two"); }), 0);
    int status = -1;
    waitpid(other, &status, 0);
    EXPECT_EQ(status, 0);
    std::istringstream text(ReadFile(dir.File("log_2024_03_07_09_05_02_041")));
    int lines = 0;
    for (std::string line; std::getline(text, line);) {
        const std::string number = std::to_string(10000 + lines).substr(1);
        EXPECT_TRUE(line == "one:" + number || line == "two:" + number) << line;
        ++lines;
    }
    EXPECT_EQ(lines, kLines);
}

TEST_F(FileFaultsPosix, TwoProcessesWithOnePrefixAMillisecondApartLoseNothing) {
    const auto write = [this](int millisecond) {
        TheWallClock().local.millisecond = millisecond;
        PRFileLogWriter writer(1);
        PRFileLogParam param = {dir.File("log"), 0, 60};
        int failed = writer.Init(&param);
        for (int i = 0; i < 500; ++i) {
            failed += WriteTo(writer, 4, "p", "%d", i);
        }
        return failed == 0 ? 0 : 1;
    };
    const pid_t other = fork();
    if (other == 0) {
        _exit(write(1));
    }
    EXPECT_EQ(InAProcess([&] { return write(2); }), 0);
    int status = -1;
    waitpid(other, &status, 0);
    EXPECT_EQ(status, 0);
    for (const char* name : {"log_2024_03_07_09_05_02_001", "log_2024_03_07_09_05_02_002"}) {
        std::string expected;
        for (int i = 0; i < 500; ++i) {
            expected += "p:" + std::to_string(i) + "\n";
        }
        EXPECT_EQ(ReadFile(dir.File(name)), expected);
    }
}

}  // namespace
