/// Loggers that are gone before the filter, or stay after it.

#include <memory>
#include <utility>
#include <vector>

#include "filter_fixture.h"

namespace {

class LoggerLifetime : public FilterTest {
protected:
    void ExpectARun() {
        EXPECT_EQ(Start(32000, 1, SAMPLE_FMT_S16, {AP_DENOISE, AP_GAIN}), 0);
        std::vector<short> samples(320);
        EXPECT_EQ(Process(samples, {AV_SOURCE_MICROPHONE}), 0);
        EXPECT_TRUE(filter->Clear());
    }

    TempDir dir;
};

TEST_F(LoggerLifetime, ALoggerThatIsFreedBeforeTheFilterIsNeverTouched) {
    auto logger = std::make_unique<MediaProcessLog>();
    logger->Init(PROCESS_LOG_DEBUG, dir.File("log"));
    filter->SetLogger(logger.get());
    ExpectARun();
    logger.reset();
    EXPECT_EQ(ReadFile(dir.File("log")), "") << "nothing is written to it";
    ExpectARun();
    filter.reset();
}

TEST_F(LoggerLifetime, ALoggerThatIsFreedAfterTheFilterOrAtTheEndOfTheProcessStillWrites) {
    static std::vector<std::unique_ptr<MediaProcessLog>> untilTheEnd;
    for (const bool freed : {true, false}) {
        auto logger = std::make_unique<MediaProcessLog>();
        logger->Init(PROCESS_LOG_DEBUG, dir.File("log"));
        filter = std::make_unique<AudioFilter>();
        filter->SetLogger(logger.get());
        ExpectARun();
        filter.reset();
        EXPECT_EQ(logger->WriteLog(PROCESS_LOG_ERROR, "after the filter"), 0);
        EXPECT_EQ(ReadFile(dir.File("log")), "after the filter\n");
        if (!freed) {
            logger->Uninit();
            untilTheEnd.push_back(std::move(logger));
        }
    }
}

TEST_F(LoggerLifetime, ALoggerWhoseLockItsThreadLeavesHeldIsFreedBeforeOrAfterTheFilter) {
    for (const bool before : {true, false}) {
        auto logger = std::make_unique<MediaProcessLog>();
        EXPECT_EQ(logger->WriteLog(PROCESS_LOG_DEBUG, "leaves the lock held"), 0);
        filter = std::make_unique<AudioFilter>();
        filter->SetLogger(logger.get());
        if (before) {
            logger.reset();
        }
        ExpectARun();
        filter.reset();
    }
}

TEST_F(LoggerLifetime, WritersThatAreRemovedWhileLoggingIsOnLeaveAFilterWhoseLinesReachNobody) {
    ExpectARun();
    EXPECT_EQ(pr_log->RemoveAllLog(), 0);
    ExpectARun();
    EXPECT_EQ(pr_log->RemoveLog(0), -1) << "too late";
    filter.reset();
}

TEST_F(LoggerLifetime, ADispatcherThatTheHostDeletesWithLoggingOffIsNotMissed) {
    PR_LOG_ENABLE(false);
    delete std::exchange(pr_log, nullptr);
    ExpectARun();
    filter.reset();
    pr_log = new PRLog;  // the host's own, from now on
    PR_LOG_ENABLE(true);
    PRFileLogParam own = {dir.File("own"), 1, 0};
    EXPECT_GE(pr_log->AddLog(PROCESS_LOG_FILE, &own, PROCESS_LOG_INFO), 0);
    filter = std::make_unique<AudioFilter>();
    filter->Clear();
    EXPECT_NE(ReadFile(dir.File("own_0")).find("Audio filter is cleared"), std::string::npos);
    pr_log->RemoveAllLog();
}

}  // namespace
