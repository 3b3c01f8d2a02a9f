#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "common/result_code.h"
#include "fake_wall_clock.h"
#include "log/media_process_log.h"
#include "log/pr_console_log_writer.h"
#include "log/pr_file_log_writer.h"
#include "log/pr_log.h"
#include "open_files.h"
#include "support/fail_each.h"
#include "support/temp_dir.h"
#include "variable_arguments.h"

using namespace audio_filter::internal;

namespace {

/// Final, so that its destructor need not be virtual.
struct FileWriter final : PRFileLogWriter {
    FileWriter() : PRFileLogWriter(1) {}
};

/// Keeps the messages about files that cannot be opened off standard error.
class LogFaults : public testing::Test {
protected:
    LogFaults() { testing::internal::CaptureStderr(); }
    ~LogFaults() override { testing::internal::GetCapturedStderr(); }

    TempDir dir;
    PRFileLogParam param = {dir.File("a_name_that_is_too_long_to_be_held_in_place"), 1, 0};
    const std::string file = param.namePrefix + "_0";
};

TEST_F(LogFaults, AWriterWithoutMemoryIsNotInTheListAndTheNextOneIs) {
    const long open = OpenFileCount();
    const int failures =
        FailEach([] { return std::make_unique<PRLog>(); },
                 [&](PRLog& log) { return log.AddLog(PROCESS_LOG_FILE, &param, 1) < 0 ? -1 : 0; },
                 [&](PRLog& log, int code) {
                     EXPECT_EQ(log.mWriters.size(), code == 0 ? 1U : 0U);
                     EXPECT_LE(OpenFileCount(), open + (code == 0 ? 1 : 0));
                     EXPECT_GE(log.AddLog(PROCESS_LOG_FILE, &param, 1), 0);
                     log.Info("p", "m");
                     EXPECT_EQ(ReadFile(file), "p:m\n");
                 });
    Report("PRLog::AddLog of a file", failures);
    EXPECT_EQ(OpenFileCount(), open);
    PRConsoleLogParam console = {1};
    Report(
        "PRLog::AddLog of a console",
        FailEach(
            [] { return std::make_unique<PRLog>(); },
            [&](PRLog& log) { return log.AddLog(PROCESS_LOG_CONSOLE, &console, 1) < 0 ? -1 : 0; },
            [](PRLog& log, int code) { EXPECT_EQ(log.mWriters.size(), code == 0 ? 1U : 0U); }));
}

TEST_F(LogFaults, AFileWriterWithoutMemoryReturnsMinus1AndTheNextInitSucceeds) {
    const long open = OpenFileCount();
    PRFileLogParam dated = {param.namePrefix, 0, 60};
    for (const bool started : {false, true}) {
        const int failures = FailEach(
            [&] {
                auto writer = std::make_unique<FileWriter>();
                if (started) {
                    PRFileLogParam other = {dir.File("other"), 1, 0};
                    writer->Init(&other);
                }
                return writer;
            },
            [&](PRFileLogWriter& writer) { return writer.Init(&dated); },
            [&](PRFileLogWriter& writer, int code) {
                EXPECT_TRUE(code == RESULT_OK || code == RESULT_FAILURE);
                WriteTo(writer, 4, "p", "m");
                EXPECT_EQ(writer.Init(&param), RESULT_OK);
                EXPECT_EQ(WriteTo(writer, 4, "p", "m"), RESULT_OK);
                EXPECT_EQ(ReadFile(file), "p:m\n");
            });
        Report("PRFileLogWriter::Init", failures);
        EXPECT_EQ(OpenFileCount(), open);
    }
}

TEST_F(LogFaults, AMessageWithoutMemoryForItsNewFileIsLostAndTheNextOneIsWritten) {
    const long open = OpenFileCount();
    const int failures = FailEach(
        [&] {
            TheWallClock() = {};
            auto writer = std::make_unique<FileWriter>();
            PRFileLogParam dated = {param.namePrefix, 0, 1};
            writer->Init(&dated);
            TheWallClock().seconds += 10;
            TheWallClock().local.second += 10;
            return writer;
        },
        [](PRFileLogWriter& writer) { return WriteTo(writer, 4, "p", "%s", "m"); },
        [&](PRFileLogWriter& writer, int code) {
            EXPECT_TRUE(code == RESULT_OK || code == RESULT_FAILURE);
            EXPECT_EQ(WriteTo(writer, 4, "p", "next"), RESULT_OK);
            EXPECT_EQ(ReadFile(param.namePrefix + "_2024_03_07_09_05_12_041"), "p:next\n");
        });
    Report("PRFileLogWriter::WriteLog with a new file", failures);
    EXPECT_EQ(OpenFileCount(), open);
}

/// The caller builds the prefix, before the dispatcher runs.
TEST_F(LogFaults, AMessageWithoutMemoryLeavesADispatcherThatWritesTheNextOne) {
    const int failures = FailEach(
        [&] {
            auto log = std::make_unique<PRLog>();
            log->AddLog(PROCESS_LOG_FILE, &param, 1);
            return log;
        },
        [](PRLog& log) {
            log.Warn(GetPRFormatDate(), "%s %0100d %.90f", "text", 5, 0.1);
            return 0;
        },
        [&](PRLog& log, int) {
            log.Info("p", "m");
            const std::string text = ReadFile(file);
            EXPECT_EQ(text.substr(text.size() - 4), "p:m\n");
        });
    Report("PRLog::Warn", failures);
}

TEST_F(LogFaults, AMediaProcessLogWithoutMemoryForItsFileReturns4ForWrites) {
    const long open = OpenFileCount();
    const int failures =
        FailEach([] { return std::make_unique<MediaProcessLog>(); },
                 [&](MediaProcessLog& log) { return log.Init(PROCESS_LOG_DEBUG, file); },
                 [&](MediaProcessLog& log, int code) {
                     EXPECT_EQ(log.IsInited(), code != kThrew);
                     const int written = log.WriteLog(PROCESS_LOG_ERROR, "m");
                     EXPECT_EQ(written, log.mFile == nullptr ? 4 : 0);
                     EXPECT_EQ(log.Init(PROCESS_LOG_DEBUG, file), RESULT_OK);
                     EXPECT_EQ(log.WriteLog(PROCESS_LOG_ERROR, "next"), RESULT_OK);
                     EXPECT_EQ(ReadFile(file), "next\n");
                 });
    Report("MediaProcessLog::Init", failures);
    Report("MediaProcessLog::WriteLog",
           FailEach(
               [&] {
                   auto log = std::make_unique<MediaProcessLog>();
                   log->Init(PROCESS_LOG_DEBUG, file);
                   return log;
               },
               [](MediaProcessLog& log) {
                   return log.WriteLog(PROCESS_LOG_ERROR, "a text that is longer than %s", "most");
               },
               [&](MediaProcessLog& log, int) {
                   EXPECT_EQ(log.WriteLog(PROCESS_LOG_ERROR, "next"), RESULT_OK);
                   const std::string text = ReadFile(file);
                   EXPECT_EQ(text.substr(text.size() - 5), "next\n");
               }));
    EXPECT_EQ(OpenFileCount(), open);
}

TEST_F(LogFaults, ADateStringWithoutMemoryThrows) {
    const auto date = [](std::string& text) {
        text = GetPRFormatDate() + GetPRFormatDate2();
        return 0;
    };
    Report("GetPRFormatDate and GetPRFormatDate2",
           FailEach([] { return std::make_unique<std::string>(); }, date,
                    [](std::string& text, int code) { EXPECT_EQ(code == 0, !text.empty()); }));
}

}  // namespace
