#include "log/media_process_log.h"

#include <gtest/gtest.h>

#include <thread>

#include "common/result_code.h"
#include "open_files.h"
#include "support/temp_dir.h"

namespace {

class MediaProcessLogTest : public testing::Test {
protected:
    /// Whether this thread holds the logger's lock: only a holder can wait, and its wait lets another
    /// thread take the lock.
    bool IsLockHeldHere() {
        ProcessCond cond;
        process_cond_init(&cond);
        bool reached = false;
        std::thread other([&] {
            process_lock(&log.mLock);
            reached = true;
            process_cond_signal(&cond);
            process_unlock(&log.mLock);
        });
        bool held = false;
        do {  // fails immediately without the lock
            held = process_cond_wait(&cond, &log.mLock) != 0;
        } while (held && !reached);
        other.join();
        process_cond_destroy(&cond);
        return held;
    }
    int Open(ProcessLogLevel level) { return log.Init(level, path); }

    TempDir dir;
    const std::string path = dir.File("log.txt");
    MediaProcessLog log;
};

TEST_F(MediaProcessLogTest, SetLogLevel0And5LeaveTheLevelUnchanged) {
    log.SetLogLevel(PROCESS_LOG_INFO);
    for (const int level : {0, 5, -1, 100, INT32_MIN}) {
        log.SetLogLevel(static_cast<ProcessLogLevel>(level));
        EXPECT_EQ(log.mLevel, 2) << level;
    }
    for (const int level : {1, 2, 3, 4}) {
        log.SetLogLevel(static_cast<ProcessLogLevel>(level));
        EXPECT_EQ(log.mLevel, level);
    }
}

TEST_F(MediaProcessLogTest, InitWithAnEmptyPathReturns3AndKeepsTheLockHeld) {
    EXPECT_EQ(log.Init(PROCESS_LOG_ERROR, ""), RESULT_INVALID);
    EXPECT_FALSE(log.IsInited());
    EXPECT_TRUE(IsLockHeldHere());
}

TEST_F(MediaProcessLogTest, InitWithALevelOutside1To4Returns3AndKeepsTheLockHeldAndTheFileOpen) {
    ASSERT_EQ(Open(PROCESS_LOG_DEBUG), RESULT_OK);
    for (const int level : {0, 5, -1}) {
        EXPECT_EQ(log.Init(static_cast<ProcessLogLevel>(level), dir.File("other")), RESULT_INVALID)
            << level;
    }
    EXPECT_TRUE(IsLockHeldHere());
    EXPECT_TRUE(log.IsInited());
    EXPECT_EQ(log.WriteLog(PROCESS_LOG_INFO, "still open"), RESULT_OK);
    EXPECT_EQ(ReadFile(path), "still open\n");
    EXPECT_EQ(dir.Names().size(), 1U);
}

TEST_F(MediaProcessLogTest, AGoodInitReleasesTheLock) {
    EXPECT_EQ(Open(PROCESS_LOG_DEBUG), RESULT_OK);
    EXPECT_TRUE(log.IsInited());
    EXPECT_FALSE(IsLockHeldHere());
}

TEST_F(MediaProcessLogTest, WriteLog2AtLevel4WritesNothingReturns0AndKeepsTheLockHeld) {
    ASSERT_EQ(Open(PROCESS_LOG_ERROR), RESULT_OK);
    EXPECT_EQ(log.WriteLog(PROCESS_LOG_INFO, "below the level"), RESULT_OK);
    EXPECT_EQ(ReadFile(path), "");
    EXPECT_TRUE(IsLockHeldHere());
}

TEST_F(MediaProcessLogTest, WriteLogWithoutAFileReturns4AndKeepsTheLockHeld) {
    EXPECT_EQ(log.WriteLog(PROCESS_LOG_ERROR, "m"), RESULT_NOT_INITIALISED);
    EXPECT_TRUE(IsLockHeldHere());
}

TEST_F(MediaProcessLogTest, WriteLogOfAnEmptyFormatReturns2AndKeepsTheLockHeld) {
    ASSERT_EQ(Open(PROCESS_LOG_DEBUG), RESULT_OK);
    EXPECT_EQ(log.WriteLog(PROCESS_LOG_ERROR, ""), RESULT_BAD_ARGUMENT);
    EXPECT_TRUE(IsLockHeldHere());
    EXPECT_EQ(ReadFile(path), "");
}

TEST_F(MediaProcessLogTest, TheOrderOfChecksIsLevelFileFormat) {
    EXPECT_EQ(log.WriteLog(PROCESS_LOG_WARN, ""), RESULT_OK) << "below level 4, without a file";
    EXPECT_EQ(log.WriteLog(PROCESS_LOG_ERROR, ""), RESULT_NOT_INITIALISED);
}

TEST_F(MediaProcessLogTest, AWrittenLineIsTheFormattedTextAloneAndReleasesTheLock) {
    ASSERT_EQ(Open(PROCESS_LOG_WARN), RESULT_OK);
    EXPECT_EQ(log.WriteLog(PROCESS_LOG_WARN, "%d%% of %s, %.2f", 5, "it", 0.5), RESULT_OK);
    EXPECT_FALSE(IsLockHeldHere());
    EXPECT_EQ(log.WriteLog(PROCESS_LOG_ERROR, "two"), RESULT_OK);
    EXPECT_EQ(ReadFile(path), "5% of it, 0.50\ntwo\n");
}

TEST_F(MediaProcessLogTest, APathThatCannotBeOpenedIsInitedAndLaterWritesReturn4) {
    EXPECT_EQ(log.Init(PROCESS_LOG_DEBUG, dir.File("no/such/folder/log.txt")), RESULT_OK);
    EXPECT_TRUE(log.IsInited());
    EXPECT_EQ(log.WriteLog(PROCESS_LOG_ERROR, "m"), RESULT_NOT_INITIALISED);
}

TEST_F(MediaProcessLogTest, InitTruncatesTheFile) {
    ASSERT_EQ(Open(PROCESS_LOG_DEBUG), RESULT_OK);
    log.WriteLog(PROCESS_LOG_ERROR, "old");
    ASSERT_EQ(Open(PROCESS_LOG_DEBUG), RESULT_OK);
    EXPECT_EQ(ReadFile(path), "");
}

TEST_F(MediaProcessLogTest, UninitClosesTheFileAndResetsTheLevelTo4) {
    ASSERT_EQ(Open(PROCESS_LOG_DEBUG), RESULT_OK);
    EXPECT_TRUE(log.Uninit());
    EXPECT_FALSE(log.IsInited());
    EXPECT_EQ(log.mLevel, 4);
    EXPECT_FALSE(IsLockHeldHere());
    EXPECT_EQ(log.WriteLog(PROCESS_LOG_ERROR, "m"), RESULT_NOT_INITIALISED);
    EXPECT_TRUE(log.Uninit());
}

TEST(MediaProcessLog, ANewLoggerIsNotInitialisedAtLevel4) {
    MediaProcessLog log;
    EXPECT_FALSE(log.IsInited());
    EXPECT_EQ(log.mLevel, 4);
}

TEST_F(MediaProcessLogTest, ALoggerWhoseLockItsThreadHoldsFourTimesClosesItsFileWhenDestroyed) {
    const long before = OpenFileCount();
    {
        MediaProcessLog held;
        ASSERT_EQ(held.Init(PROCESS_LOG_ERROR, path), RESULT_OK);
        EXPECT_EQ(held.WriteLog(PROCESS_LOG_DEBUG, "below the level"), RESULT_OK);
        EXPECT_EQ(held.WriteLog(PROCESS_LOG_ERROR, ""), RESULT_BAD_ARGUMENT);
        EXPECT_EQ(held.Init(PROCESS_LOG_DEBUG, ""), RESULT_INVALID);
        held.mInited = false;
        EXPECT_EQ(held.WriteLog(PROCESS_LOG_ERROR, "m"), RESULT_NOT_INITIALISED);
        EXPECT_EQ(OpenFileCount(), before + 1);
    }
    EXPECT_EQ(OpenFileCount(), before);
}

TEST_F(MediaProcessLogTest, WriteLogToAnOpenFileBeforeInitReturns4) {
    ASSERT_EQ(Open(PROCESS_LOG_DEBUG), RESULT_OK);
    log.mInited = false;
    EXPECT_EQ(log.WriteLog(PROCESS_LOG_ERROR, "m"), RESULT_NOT_INITIALISED);
    EXPECT_EQ(ReadFile(path), "");
}

TEST_F(MediaProcessLogTest, HoldsOneFileOpenAndNoneWhenDestroyed) {
    const long before = OpenFileCount();
    ASSERT_EQ(Open(PROCESS_LOG_DEBUG), RESULT_OK);
    ASSERT_EQ(Open(PROCESS_LOG_DEBUG), RESULT_OK);
    EXPECT_EQ(OpenFileCount(), before + 1);
    log.Uninit();
    EXPECT_EQ(OpenFileCount(), before);
    {
        MediaProcessLog other;
        ASSERT_EQ(other.Init(PROCESS_LOG_DEBUG, path), RESULT_OK);
    }
    EXPECT_EQ(OpenFileCount(), before);
}

}  // namespace
