/// Loggers that are destroyed before or after the filter.

#include <memory>
#include <utility>
#include <vector>

#include "common/result_code.h"
#include "filter_fixture.h"

namespace {

class LoggerLifetime : public FilterTest {
protected:
    void ExpectARun() {
        EXPECT_EQ(Start(32000, 1, SAMPLE_FMT_S16, {AP_DENOISE, AP_GAIN}), RESULT_OK);
        std::vector<short> samples(320);
        EXPECT_EQ(Process(samples, {AV_SOURCE_MICROPHONE}), RESULT_OK);
        EXPECT_TRUE(filter->Clear());
    }

    TempDir dir;
};

TEST_F(LoggerLifetime, ALoggerFreedBeforeTheFilterIsNeverUsed) {
    auto logger = std::make_unique<MediaProcessLog>();
    logger->Init(PROCESS_LOG_DEBUG, dir.File("log"));
    filter->SetLogger(logger.get());
    ExpectARun();
    logger.reset();
    EXPECT_EQ(ReadFile(dir.File("log")), "") << "the filter writes nothing to it";
    ExpectARun();
    filter.reset();
}

TEST_F(LoggerLifetime, ALoggerFreedAfterTheFilterOrAtProcessExitStillWrites) {
    static std::vector<std::unique_ptr<MediaProcessLog>> untilTheEnd;
    for (const bool freed : {true, false}) {
        auto logger = std::make_unique<MediaProcessLog>();
        logger->Init(PROCESS_LOG_DEBUG, dir.File("log"));
        filter = std::make_unique<AudioFilter>();
        filter->SetLogger(logger.get());
        ExpectARun();
        filter.reset();
        EXPECT_EQ(logger->WriteLog(PROCESS_LOG_ERROR, "after the filter"), RESULT_OK);
        EXPECT_EQ(ReadFile(dir.File("log")), "after the filter\n");
        if (!freed) {
            logger->Uninit();
            untilTheEnd.push_back(std::move(logger));
        }
    }
}

TEST_F(LoggerLifetime, ALoggerWithItsLockHeldCanBeFreedBeforeOrAfterTheFilter) {
    for (const bool before : {true, false}) {
        auto logger = std::make_unique<MediaProcessLog>();
        EXPECT_EQ(logger->WriteLog(PROCESS_LOG_DEBUG, "leaves the lock held"), RESULT_OK);
        filter = std::make_unique<AudioFilter>();
        filter->SetLogger(logger.get());
        if (before) {
            logger.reset();
        }
        ExpectARun();
        filter.reset();
    }
}

TEST_F(LoggerLifetime, AFilterStillRunsOnceTheWritersAreRemoved) {
    ExpectARun();
    EXPECT_EQ(pr_log->RemoveAllLog(), RESULT_OK);
    ExpectARun();
    EXPECT_EQ(pr_log->RemoveLog(0), RESULT_FAILURE) << "already removed";
    filter.reset();
}

TEST_F(LoggerLifetime, WithLoggingOffTheHostMayDeleteTheDispatcher) {
    PR_LOG_ENABLE(false);
    delete std::exchange(pr_log, nullptr);
    ExpectARun();
    filter.reset();
    pr_log = new PRLog;  // now the host's own
    PR_LOG_ENABLE(true);
    PRFileLogParam own = {dir.File("own"), 1, 0};
    EXPECT_GE(pr_log->AddLog(PROCESS_LOG_FILE, &own, PROCESS_LOG_INFO), 0);
    filter = std::make_unique<AudioFilter>();
    filter->Clear();
    EXPECT_NE(ReadFile(dir.File("own_0")).find("Audio filter is cleared"), std::string::npos);
    pr_log->RemoveAllLog();
}

}  // namespace
