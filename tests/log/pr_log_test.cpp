#include "log/pr_log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "common/result_code.h"
#include "fake_wall_clock.h"
#include "log/pr_console_log_writer.h"
#include "log/pr_file_log_writer.h"
#include "open_files.h"
#include "support/temp_dir.h"
#include "support/virtual_slots.h"

using namespace audio_filter::internal;

namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

class PRLogTest : public testing::Test {
protected:
    int AddFile(const std::string& name, int level) {
        PRFileLogParam param = {dir.File(name), 1, 0};
        return log.AddLog(PROCESS_LOG_FILE, &param, level);
    }
    std::string Contents(const std::string& name) { return ReadFile(dir.File(name + "_0")); }

    TempDir dir;
    PRLog log;
};

TEST_F(PRLogTest, AddLogOfType2ReturnsMinus1AndPrintsNothing) {
    CaptureStderr();
    CaptureStdout();
    EXPECT_EQ(log.AddLog(PROCESS_LOG_UNSUPPORTED, nullptr, 1), RESULT_FAILURE);
    EXPECT_EQ(GetCapturedStdout(), "");
    EXPECT_EQ(GetCapturedStderr(), "");
}

TEST_F(PRLogTest, AddLogOfType7PrintsTheUnrecognisedTypeAndReturnsMinus1) {
    CaptureStderr();
    EXPECT_EQ(log.AddLog(static_cast<ProcessLogType>(7), nullptr, 1), RESULT_FAILURE);
    EXPECT_EQ(GetCapturedStderr(), "Log Type unrecgnized LogType=7");
}

TEST_F(PRLogTest, ARefusedTypeTakesNoId) {
    const int before = GeneratePRLogId();
    CaptureStderr();
    log.AddLog(PROCESS_LOG_UNSUPPORTED, nullptr, 1);
    log.AddLog(static_cast<ProcessLogType>(-1), nullptr, 1);
    EXPECT_EQ(GetCapturedStderr(), "Log Type unrecgnized LogType=-1");
    EXPECT_EQ(GeneratePRLogId(), before + 1);
}

TEST_F(PRLogTest, WritersAndDirectCallsShareOneSequenceOfIds) {
    const int first = AddFile("a", 1);
    EXPECT_EQ(GeneratePRLogId(), first + 1);
    EXPECT_EQ(AddFile("b", 1), first + 2);
    PRConsoleLogWriter writer(1);
    EXPECT_EQ(writer.GetId(), first + 3);
}

TEST_F(PRLogTest, AConsoleWriterWithAnInvalidParameterIsKeptAndItsWritesReturnMinus1) {
    PRConsoleLogParam param = {9};
    CaptureStderr();
    const int id = log.AddLog(PROCESS_LOG_CONSOLE, &param, 1);
    GetCapturedStderr();
    EXPECT_GE(id, 0);
    ASSERT_EQ(log.mWriters.size(), 1U);
    EXPECT_EQ(log.mWriters[0]->WriteLog(4, "p", "m", nullptr), RESULT_FAILURE);
    log.Error("p", "m");
    EXPECT_EQ(log.RemoveLog(id), RESULT_OK);
}

TEST_F(PRLogTest, OfWritersAtLevels1And3AWarnReachesBothAndAnInfoOnlyTheFirst) {
    AddFile("a", 1);
    AddFile("b", 3);
    log.Warn("p", "warn");
    log.Info("p", "info");
    EXPECT_EQ(Contents("a"), "p:warn\np:info\n");
    EXPECT_EQ(Contents("b"), "p:warn\n");
}

TEST_F(PRLogTest, RemoveLogOfAnUnknownIdReturnsMinus1AndLeavesTheListUnchanged) {
    const int id = AddFile("a", 1);
    const std::vector<PRLogWriter*> before = log.mWriters;
    EXPECT_EQ(log.RemoveLog(id + 1000), RESULT_FAILURE);
    EXPECT_EQ(log.RemoveLog(-1), RESULT_FAILURE);
    EXPECT_EQ(log.mWriters, before);
}

TEST_F(PRLogTest, DebugInfoWarnErrorAreLevels1To4) {
    for (int level = 1; level <= 5; ++level) {
        AddFile(std::to_string(level), level);
    }
    log.Debug("p", "debug");
    log.Info("p", "info");
    log.Warn("p", "warn");
    log.Error("p", "error");
    EXPECT_EQ(Contents("1"), "p:debug\np:info\np:warn\np:error\n");
    EXPECT_EQ(Contents("2"), "p:info\np:warn\np:error\n");
    EXPECT_EQ(Contents("3"), "p:warn\np:error\n");
    EXPECT_EQ(Contents("4"), "p:error\n");
    EXPECT_EQ(Contents("5"), "");
}

TEST_F(PRLogTest, EachOfFiveWritersGetsTheWholeArgumentList) {
    for (int i = 0; i < 5; ++i) {
        AddFile(std::to_string(i), 1);
    }
    const std::string text(300, 'x');
    log.Info("p", "%d %s %.3f %lld %c %d %d %d %f %s", 1, text.c_str(), 2.5, 1LL << 40, 'c', 2, 3,
             4, 0.125, "last");
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(Contents(std::to_string(i)),
                  "p:1 " + text + " 2.500 1099511627776 c 2 3 4 0.125000 last\n");
    }
}

TEST_F(PRLogTest, RemoveLogKeepsTheOrderOfTheOthers) {
    const int a = AddFile("a", 1);
    const int b = AddFile("b", 1);
    const int c = AddFile("c", 1);
    EXPECT_EQ(log.RemoveLog(b), RESULT_OK);
    ASSERT_EQ(log.mWriters.size(), 2U);
    EXPECT_EQ(log.mWriters[0]->GetId(), a);
    EXPECT_EQ(log.mWriters[1]->GetId(), c);
    log.Info("p", "m");
    EXPECT_EQ(Contents("b"), "");
    EXPECT_EQ(Contents("c"), "p:m\n");
    EXPECT_EQ(log.RemoveLog(b), RESULT_FAILURE);
}

TEST_F(PRLogTest, SetLogLevelActsOnTheWriterWithThatId) {
    const int a = AddFile("a", 4);
    AddFile("b", 4);
    EXPECT_EQ(log.SetLogLevel(a, 1), RESULT_OK);
    EXPECT_EQ(log.SetLogLevel(a + 1000, 1), RESULT_FAILURE);
    log.Debug("p", "m");
    EXPECT_EQ(Contents("a"), "p:m\n");
    EXPECT_EQ(Contents("b"), "");
}

TEST_F(PRLogTest, RemoveAllLogEmptiesTheListAndLaterMessagesAreLost) {
    AddFile("a", 1);
    AddFile("b", 1);
    EXPECT_EQ(log.RemoveAllLog(), RESULT_OK);
    EXPECT_EQ(log.mWriters.size(), 0U);
    log.Error("p", "m");
    EXPECT_EQ(Contents("a"), "");
    EXPECT_EQ(log.RemoveAllLog(), RESULT_OK);
}

TEST_F(PRLogTest, AFormatWithoutArgumentsIsStillFormatted) {
    AddFile("a", 1);
    log.Info("100%", "100%%");
    EXPECT_EQ(Contents("a"), "100%:100%\n");
}

TEST_F(PRLogTest, MessagesOfTwoThreadsAreWholeLinesInOrder) {
    AddFile("a", 1);
    const auto chatter = [this](const char* name) {
        for (int i = 0; i < 500; ++i) {
            log.Info(name, "%s %d", "message", i);
        }
    };
    std::thread first(chatter, "one");
    std::thread second(chatter, "two");
    for (int i = 0; i < 50; ++i) {
        const int id = AddFile("b", 1);
        log.SetLogLevel(id, 2);
        log.RemoveLog(id);
    }
    first.join();
    second.join();
    std::istringstream lines(Contents("a"));
    int next[2] = {0, 0};
    for (std::string line; std::getline(lines, line);) {
        const int thread = line.substr(0, 4) == "two:" ? 1 : 0;
        ASSERT_EQ(line,
                  (thread == 1 ? "two:message " : "one:message ") + std::to_string(next[thread]++));
    }
    EXPECT_EQ(next[0], 500);
    EXPECT_EQ(next[1], 500);
}

TEST_F(PRLogTest, WritersAreAddedAndRemovedWhileAnotherThreadLogs) {
    std::jthread chatter([this] {
        for (int i = 0; i < 500; ++i) {
            log.Info("p", "%d", i);
        }
    });
    for (int i = 0; i < 50; ++i) {
        AddFile("a", 1);
        AddFile("b", 1);
        log.RemoveAllLog();
    }
    chatter.join();
    EXPECT_EQ(log.mWriters.size(), 0U);
}

class CountingWriter : public PRLogWriter {
public:
    explicit CountingWriter(int& destroyed) : PRLogWriter(1), mDestroyed(destroyed) {}
    int Init(void*) override { return 0; }
    int WriteLog(int, const char*, const char*, char*) override { return 0; }
    void Destroy() override { ++mDestroyed; }
    int SetLevel(int level) override { return level * 10; }

private:
    int& mDestroyed;
};

TEST_F(PRLogTest, AWriterOfAnotherTypeIsDestroyedAndItsStorageReleased) {
    int destroyed = 0;
    auto* writer = new CountingWriter(destroyed);
    log.mWriters.push_back(writer);
    EXPECT_EQ(log.SetLogLevel(writer->GetId(), 3), 30) << "the writer's own result";
    EXPECT_EQ(log.RemoveLog(writer->GetId()), RESULT_OK);
    EXPECT_EQ(destroyed, 1);
}

TEST_F(PRLogTest, RemovingWritersClosesTheirFiles) {
    const long before = OpenFileCount();
    const int id = AddFile("a", 1);
    AddFile("b", 1);
    EXPECT_EQ(log.RemoveLog(id), RESULT_OK);
    EXPECT_EQ(OpenFileCount(), before + 1);
    log.RemoveAllLog();
    EXPECT_EQ(OpenFileCount(), before);
    {
        PRLog other;
        PRFileLogParam param = {dir.File("c"), 1, 0};
        other.AddLog(PROCESS_LOG_FILE, &param, 1);
    }
    EXPECT_EQ(OpenFileCount(), before);
}

TEST(PRLogInterface, VirtualOperationsKeepTheirSlots) {
    // The destructor takes slots 0 and 1.
    EXPECT_EQ(VirtualSlot(&PRLog::AddLog), 2U);
    EXPECT_EQ(VirtualSlot(&PRLog::RemoveLog), 3U);
    EXPECT_EQ(VirtualSlot(&PRLog::SetLogLevel), 4U);
    EXPECT_EQ(VirtualSlot(&PRLog::RemoveAllLog), 5U);
    EXPECT_EQ(VirtualSlot(&PRLog::Info), 6U);
    EXPECT_EQ(VirtualSlot(&PRLog::Debug), 7U);
    EXPECT_EQ(VirtualSlot(&PRLog::Warn), 8U);
    EXPECT_EQ(VirtualSlot(&PRLog::Error), 9U);
    EXPECT_EQ(VirtualSlot(&PRLogWriter::Init), 0U);
    EXPECT_EQ(VirtualSlot(&PRLogWriter::WriteLog), 1U);
    EXPECT_EQ(VirtualSlot(&PRLogWriter::Destroy), 2U);
    EXPECT_EQ(VirtualSlot(&PRLogWriter::GetId), 3U);
    EXPECT_EQ(VirtualSlot(&PRLogWriter::SetLevel), 4U);
    EXPECT_EQ(VirtualSlot(&PRFileLogWriter::CheckPartion), 5U);
}

TEST(PRLogInterface, MembersKeepTheirOrder) {
    PRFileLogWriter writer(1);
    const auto place = [&writer](const void* member) {
        return static_cast<const char*>(member) - reinterpret_cast<const char*>(&writer);
    };
    EXPECT_EQ(place(&writer.mLevel), 8);
    EXPECT_EQ(place(&writer.mId), 12);
    const std::vector<std::ptrdiff_t> places = {
        place(&writer.mNamePrefix),      place(&writer.mFileName), place(&writer.nPartionSize),
        place(&writer.mPartitionPeriod), place(&writer.mFile),     place(&writer.mWrittenCount),
        place(&writer.mPartNumber),      place(&writer.mStartTime)};
    EXPECT_TRUE(std::is_sorted(places.begin(), places.end()));
}

TEST(PRLogGlobals, TheLibraryHasOneDispatcherWithoutWritersAndLoggingIsOff) {
    ASSERT_NE(pr_log, nullptr);
    EXPECT_EQ(pr_log->mWriters.size(), 0U);
    EXPECT_FALSE(pr_log_enalbe);
    PR_LOG_ENABLE(true);
    EXPECT_TRUE(pr_log_enalbe);
    PR_LOG_ENABLE(false);
    EXPECT_FALSE(pr_log_enalbe);
}

TEST(PRLogDates, ShowTheLocalTimeToTheMillisecond) {
    TheWallClock() = {};
    EXPECT_EQ(GetPRFormatDate(), "2024-03-07 09:05:02.041");
    EXPECT_EQ(GetPRFormatDate2(), "2024_03_07_09_05_02_041");
    TheWallClock().local = {2026, 12, 31, 23, 59, 59, 999};
    EXPECT_EQ(GetPRFormatDate(), "2026-12-31 23:59:59.999");
    EXPECT_EQ(GetPRFormatDate2(), "2026_12_31_23_59_59_999");
}

TEST(PRLogDates, NumbersPrintInDecimal) {
    EXPECT_EQ(int2str_pr(0), "0");
    EXPECT_EQ(int2str_pr(-2147483647 - 1), "-2147483648");
    EXPECT_EQ(int2str_pr(2147483647), "2147483647");
}

}  // namespace
