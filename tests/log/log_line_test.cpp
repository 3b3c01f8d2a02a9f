#include "log/log_line.h"

#include <gtest/gtest.h>

#include "fake_wall_clock.h"
#include "log/pr_file_log_writer.h"
#include "support/temp_dir.h"

using namespace audio_filter::internal;

namespace {

class LogLineTest : public testing::Test {
protected:
    LogLineTest() {
        TheWallClock() = {};
        PRFileLogParam param = {dir.File("log"), 1, 0};
        pr_log->AddLog(PROCESS_LOG_FILE, &param, 1);
        PR_LOG_ENABLE(true);
        TheWallClock().reads = 0;
    }
    ~LogLineTest() override {
        PR_LOG_ENABLE(false);
        pr_log->RemoveAllLog();
    }
    std::string Lines() { return ReadFile(dir.File("log_0")); }

    TempDir dir;
};

TEST_F(LogLineTest, HasDateTagModuleFunctionLineAndMessage) {
    LogLine(PROCESS_LOG_ERROR, {"AudioFilter::Init", 83},
            "audio denoisor init error, error code is %d", -1);
    EXPECT_EQ(Lines(),
              "2024-03-07 09:05:02.041:[ERROR]MediaProcessLog:AudioFilter::Init:83:"
              "audio denoisor init error, error code is -1\n");
}

TEST_F(LogLineTest, EachLevelHasItsTagAndItsDispatcherCall) {
    LogLine(PROCESS_LOG_DEBUG, {"F", 1}, "a");
    LogLine(PROCESS_LOG_INFO, {"F", 2}, "b");
    LogLine(PROCESS_LOG_WARN, {"F", 3}, "c");
    LogLine(PROCESS_LOG_ERROR, {"F", 4}, "d");
    const std::string date = "2024-03-07 09:05:02.041:";
    EXPECT_EQ(Lines(),
              date + "[DEBUG]MediaProcessLog:F:1:a\n" + date + "[INFO]MediaProcessLog:F:2:b\n" +
                  date + "[WARN]MediaProcessLog:F:3:c\n" + date + "[ERROR]MediaProcessLog:F:4:d\n");
}

TEST_F(LogLineTest, ASiteWithoutALineTagHasItsOwnSourceLine) {
    LogLine(PROCESS_LOG_INFO, {"F"}, "m");
    EXPECT_NE(Lines().find(":F:" + std::to_string(__LINE__ - 1) + ":m\n"), std::string::npos);
}

TEST_F(LogLineTest, ALineBelowTheWritersLevelIsNotWritten) {
    pr_log->SetLogLevel(pr_log->mWriters[0]->GetId(), 3);
    LogLine(PROCESS_LOG_INFO, {"F", 1}, "quiet");
    EXPECT_EQ(Lines(), "");
}

TEST_F(LogLineTest, WhileLoggingIsOffNoDateIsReadAndPrLogIsNotUsed) {
    PR_LOG_ENABLE(false);
    PRLog* const kept = pr_log;
    pr_log = nullptr;
    LogLine(PROCESS_LOG_ERROR, {"F", 1}, "m %d", 1);
    pr_log = kept;
    EXPECT_EQ(TheWallClock().reads, 0);
    EXPECT_EQ(Lines(), "");
}

}  // namespace
