#include "log/pr_file_log_writer.h"

#include <gtest/gtest.h>

#include "common/result_code.h"
#include "fake_wall_clock.h"
#include "open_files.h"
#include "support/temp_dir.h"
#include "variable_arguments.h"

using namespace audio_filter::internal;

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using Names = std::vector<std::string>;

class PRFileLogWriterTest : public testing::Test {
protected:
    PRFileLogWriterTest() { TheWallClock() = {}; }

    int Init(int partionSize, int period) {
        PRFileLogParam param = {dir.File("log"), partionSize, period};
        return writer.Init(&param);
    }
    std::string Contents(const std::string& name) { return ReadFile(dir.File(name)); }
    Names SortedNames() {
        Names names = dir.Names();
        std::sort(names.begin(), names.end());
        return names;
    }

    TempDir dir;
    PRFileLogWriter writer{1};
};

TEST_F(PRFileLogWriterTest, WithoutLimitsItOpensTheDatedFileAndNeverRotates) {
    ASSERT_EQ(Init(0, 0), RESULT_OK);
    for (int day = 0; day < 3; ++day) {
        TheWallClock().local.day += 1;
        TheWallClock().seconds += 86'400;
        EXPECT_EQ(WriteTo(writer, 2, "p", "day %d", day), RESULT_OK);
    }
    EXPECT_EQ(dir.Names(), Names{"log_2024_03_07_09_05_02_041"});
    EXPECT_EQ(Contents("log_2024_03_07_09_05_02_041"), "p:day 0\np:day 1\np:day 2\n");
}

TEST_F(PRFileLogWriterTest, BothLimits5And60Fail) {
    CaptureStderr();
    EXPECT_EQ(Init(5, 60), RESULT_FAILURE);
    EXPECT_EQ(GetCapturedStderr(), "InitParam error nPartionSize canot both > 0");
    EXPECT_EQ(dir.Names(), Names{});
    EXPECT_EQ(WriteTo(writer, 4, "p", "m"), RESULT_FAILURE);
}

TEST_F(PRFileLogWriterTest, APeriodOf1SecondOpensANewFileAfterMoreThan1SecondAndThenAtEveryWrite) {
    ASSERT_EQ(Init(0, 1), RESULT_OK);
    TheWallClock().seconds += 1;
    TheWallClock().local.second = 3;
    EXPECT_EQ(WriteTo(writer, 2, "p", "at one second"), RESULT_OK);
    EXPECT_EQ(dir.Names(), Names{"log_2024_03_07_09_05_02_041"});
    TheWallClock().seconds += 1;
    TheWallClock().local.second = 4;
    EXPECT_EQ(WriteTo(writer, 2, "p", "after two"), RESULT_OK);
    TheWallClock().local.millisecond = 42;
    EXPECT_EQ(WriteTo(writer, 2, "p", "and again"), RESULT_OK);
    EXPECT_EQ(SortedNames(), (Names{"log_2024_03_07_09_05_02_041", "log_2024_03_07_09_05_04_041",
                                    "log_2024_03_07_09_05_04_042"}));
    EXPECT_EQ(Contents("log_2024_03_07_09_05_02_041"), "p:at one second\n");
    EXPECT_EQ(Contents("log_2024_03_07_09_05_04_041"), "p:after two\n");
    EXPECT_EQ(Contents("log_2024_03_07_09_05_04_042"), "p:and again\n");
}

TEST_F(PRFileLogWriterTest, TwoRotationsWithinOneMillisecondReuseTheNameAndTruncateIt) {
    ASSERT_EQ(Init(0, 1), RESULT_OK);
    TheWallClock().seconds += 2;
    TheWallClock().local.second = 4;
    EXPECT_EQ(WriteTo(writer, 2, "p", "first"), RESULT_OK);
    EXPECT_EQ(WriteTo(writer, 2, "p", "second"), RESULT_OK);
    EXPECT_EQ(Contents("log_2024_03_07_09_05_04_041"), "p:second\n");
}

TEST_F(PRFileLogWriterTest, AMessageBelowTheLevelDoesNotRotate) {
    ASSERT_EQ(Init(0, 1), RESULT_OK);
    writer.SetLevel(3);
    TheWallClock().seconds += 2;
    TheWallClock().local.second = 4;
    EXPECT_EQ(WriteTo(writer, 2, "p", "m"), RESULT_OK);
    EXPECT_EQ(dir.Names().size(), 1U);
}

TEST_F(PRFileLogWriterTest, AClockThatJumpsBackDoesNotRotate) {
    ASSERT_EQ(Init(0, 1), RESULT_OK);
    TheWallClock().seconds -= 1'000'000;
    EXPECT_EQ(WriteTo(writer, 2, "p", "m"), RESULT_OK);
    EXPECT_EQ(dir.Names().size(), 1U);
}

TEST_F(PRFileLogWriterTest, AClockThatJumpsAYearAheadRotatesAndOnceBackKeepsWritingToThatFile) {
    ASSERT_EQ(Init(0, 60), RESULT_OK);
    TheWallClock().seconds += 31'536'000;
    TheWallClock().local.year = 2025;
    EXPECT_EQ(WriteTo(writer, 2, "p", "ahead"), RESULT_OK);
    TheWallClock() = {};
    EXPECT_EQ(WriteTo(writer, 2, "p", "back"), RESULT_OK);
    EXPECT_EQ(SortedNames(), (Names{"log_2024_03_07_09_05_02_041", "log_2025_03_07_09_05_02_041"}));
    EXPECT_EQ(Contents("log_2024_03_07_09_05_02_041"), "");
    EXPECT_EQ(Contents("log_2025_03_07_09_05_02_041"), "p:ahead\np:back\n");
}

TEST_F(PRFileLogWriterTest, TheEndOfDaylightSavingTimeReopensAndTruncatesAnEarlierName) {
    ASSERT_EQ(Init(0, 60), RESULT_OK);
    EXPECT_EQ(WriteTo(writer, 2, "p", "before"), RESULT_OK);
    TheWallClock().seconds += 3'600;  // while the local time repeats the hour
    EXPECT_EQ(WriteTo(writer, 2, "p", "after"), RESULT_OK);
    EXPECT_EQ(dir.Names(), Names{"log_2024_03_07_09_05_02_041"});
    EXPECT_EQ(Contents("log_2024_03_07_09_05_02_041"), "p:after\n");
}

TEST_F(PRFileLogWriterTest, PartionSize1KeepsWritingToPrefix0) {
    ASSERT_EQ(Init(1, 0), RESULT_OK);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(WriteTo(writer, 2, "p", "%d", i), RESULT_OK);
    }
    EXPECT_EQ(dir.Names(), Names{"log_0"});
    EXPECT_EQ(writer.mWrittenCount, 0U);
}

TEST_F(PRFileLogWriterTest, ACountAboveTheLimitOpensTheNextPart) {
    ASSERT_EQ(Init(10, 0), RESULT_OK);
    EXPECT_EQ(WriteTo(writer, 2, "p", "a"), RESULT_OK);
    writer.mWrittenCount = 10;
    EXPECT_EQ(WriteTo(writer, 2, "p", "b"), RESULT_OK);
    writer.mWrittenCount = 11;
    EXPECT_EQ(WriteTo(writer, 2, "p", "c"), RESULT_OK);
    EXPECT_EQ(WriteTo(writer, 2, "p", "d"), RESULT_OK);
    EXPECT_EQ(SortedNames(), (Names{"log_0", "log_1", "log_2"}));
    EXPECT_EQ(Contents("log_0"), "p:a\np:b\n");
    EXPECT_EQ(Contents("log_1"), "p:c\n");
    EXPECT_EQ(Contents("log_2"), "p:d\n");
}

TEST_F(PRFileLogWriterTest, ANullBlockAndAnEmptyPrefixPrintInitParamErrorAndLeaveAnOpenFileInUse) {
    ASSERT_EQ(Init(3, 0), RESULT_OK);
    PRFileLogParam empty;
    CaptureStderr();
    EXPECT_EQ(writer.Init(nullptr), RESULT_FAILURE);
    EXPECT_EQ(writer.Init(&empty), RESULT_FAILURE);
    EXPECT_EQ(GetCapturedStderr(), "InitParam error\nInitParam error\n");
    EXPECT_EQ(WriteTo(writer, 2, "p", "still here"), RESULT_OK);
    EXPECT_EQ(Contents("log_0"), "p:still here\n");
}

TEST_F(PRFileLogWriterTest, TwoPositiveLimitsLeaveAnOpenFileInUse) {
    ASSERT_EQ(Init(3, 0), RESULT_OK);
    CaptureStderr();
    EXPECT_EQ(Init(5, 60), RESULT_FAILURE);
    GetCapturedStderr();
    EXPECT_EQ(WriteTo(writer, 2, "p", "still here"), RESULT_OK);
    EXPECT_EQ(Contents("log_0"), "p:still here\n");
}

TEST_F(PRFileLogWriterTest, AFileThatCannotBeOpenedPrintsAMessageAndWritesReturnMinus1) {
    PRFileLogParam param = {dir.File("no/such/folder"), 1, 0};
    CaptureStderr();
    EXPECT_EQ(writer.Init(&param), RESULT_FAILURE);
    EXPECT_EQ(GetCapturedStderr(), "could not open log file " + dir.File("no/such/folder_0"));
    EXPECT_EQ(WriteTo(writer, 2, "p", "m"), RESULT_FAILURE);
    EXPECT_EQ(WriteTo(writer, 0, "p", "m"), RESULT_OK) << "the level is checked first";
}

TEST_F(PRFileLogWriterTest, ARotationToTheNameOfAFolderPrintsAMessageAndReturnsMinus1) {
    PRFileLogParam param = {dir.File("log"), 0, 1};
    ASSERT_EQ(writer.Init(&param), RESULT_OK);
    TheWallClock().seconds += 2;
    TheWallClock().local.millisecond = 42;
    std::filesystem::create_directory(dir.File("log_2024_03_07_09_05_02_042"));
    CaptureStderr();
    EXPECT_EQ(WriteTo(writer, 2, "p", "m"), RESULT_FAILURE);
    EXPECT_EQ(GetCapturedStderr(),
              "could not open log file " + dir.File("log_2024_03_07_09_05_02_042"));
}

TEST_F(PRFileLogWriterTest, InitAgainClosesTheFileAndTruncatesTheNewOne) {
    ASSERT_EQ(Init(1, 0), RESULT_OK);
    WriteTo(writer, 2, "p", "old");
    ASSERT_EQ(Init(1, 0), RESULT_OK);
    WriteTo(writer, 2, "p", "new");
    EXPECT_EQ(Contents("log_0"), "p:new\n");
}

TEST_F(PRFileLogWriterTest, NegativeLimitsAreNoLimits) {
    ASSERT_EQ(Init(-5, -60), RESULT_OK);
    TheWallClock().seconds += 1'000'000;
    EXPECT_EQ(WriteTo(writer, 2, "p", "m"), RESULT_OK);
    EXPECT_EQ(dir.Names(), Names{"log_2024_03_07_09_05_02_041"});
}

TEST_F(PRFileLogWriterTest, DestroyClosesTheFileAndMayBeRepeated) {
    ASSERT_EQ(Init(1, 0), RESULT_OK);
    writer.Destroy();
    writer.Destroy();
    EXPECT_EQ(WriteTo(writer, 2, "p", "m"), RESULT_FAILURE);
}

TEST_F(PRFileLogWriterTest, EveryMessageIsFlushed) {
    ASSERT_EQ(Init(1, 0), RESULT_OK);
    WriteTo(writer, 2, "p", "m");
    EXPECT_EQ(Contents("log_0"), "p:m\n") << "while the file is open";
}

TEST(PRFileLogWriter, HasAValueInEveryFieldBeforeInit) {
    PRFileLogWriter writer(2);
    EXPECT_EQ(writer.mFile, nullptr);
    EXPECT_EQ(writer.nPartionSize, 0);
    EXPECT_EQ(writer.mPartitionPeriod, 0);
    EXPECT_EQ(writer.mWrittenCount, 0U);
    EXPECT_EQ(writer.mPartNumber, 0U);
    EXPECT_EQ(writer.mStartTime, 0);
    EXPECT_EQ(WriteTo(writer, 4, "p", "m"), RESULT_FAILURE);
}

TEST_F(PRFileLogWriterTest, BothLimitsAt1FailToo) {
    CaptureStderr();
    EXPECT_EQ(Init(1, 1), RESULT_FAILURE);
    EXPECT_EQ(GetCapturedStderr(), "InitParam error nPartionSize canot both > 0");
    EXPECT_EQ(Init(1, 0), RESULT_OK);
    EXPECT_EQ(Init(0, 1), RESULT_OK);
}

TEST_F(PRFileLogWriterTest, WithAPeriodAFileThatCannotBeOpenedIsRetriedAtEveryMessage) {
    PRFileLogParam param = {dir.File("sub/log"), 0, 1};
    CaptureStderr();
    EXPECT_EQ(writer.Init(&param), RESULT_FAILURE);
    EXPECT_EQ(WriteTo(writer, 2, "p", "lost"), RESULT_FAILURE);
    const std::string line =
        "could not open log file " + dir.File("sub/log_2024_03_07_09_05_02_041");
    EXPECT_EQ(GetCapturedStderr(), line + line);
    std::filesystem::create_directory(dir.File("sub"));
    EXPECT_EQ(WriteTo(writer, 2, "p", "found"), RESULT_OK);
    EXPECT_EQ(Contents("sub/log_2024_03_07_09_05_02_041"), "p:found\n");
}

TEST_F(PRFileLogWriterTest, InitResetsTheCounts) {
    ASSERT_EQ(Init(10, 0), RESULT_OK);
    writer.mWrittenCount = 11;
    EXPECT_EQ(WriteTo(writer, 2, "p", "m"), RESULT_OK);
    EXPECT_EQ(writer.mPartNumber, 1U);
    ASSERT_EQ(Init(10, 0), RESULT_OK);
    EXPECT_EQ(writer.mWrittenCount, 0U);
    EXPECT_EQ(writer.mPartNumber, 0U);
    EXPECT_EQ(writer.mStartTime, TheWallClock().seconds);
}

TEST_F(PRFileLogWriterTest, HoldsOneFileOpenAcross20RotationsAndNoneWhenDestroyed) {
    const long before = OpenFileCount();
    ASSERT_EQ(Init(0, 1), RESULT_OK);
    TheWallClock().seconds += 2;
    for (int i = 0; i < 20; ++i) {
        TheWallClock().local.millisecond = i;
        ASSERT_EQ(WriteTo(writer, 2, "p", "m"), RESULT_OK);
    }
    ASSERT_EQ(Init(0, 0), RESULT_OK);
    EXPECT_EQ(OpenFileCount(), before + 1);
    {
        PRFileLogWriter other(1);
        PRFileLogParam param = {dir.File("other"), 1, 0};
        ASSERT_EQ(other.Init(&param), RESULT_OK);
    }
    writer.Destroy();
    EXPECT_EQ(OpenFileCount(), before);
}

TEST_F(PRFileLogWriterTest, TheFileIsOpenForReadingToo) {
    ASSERT_EQ(Init(1, 0), RESULT_OK);
    WriteTo(writer, 2, "p", "m");
    std::rewind(writer.mFile);
    EXPECT_EQ(std::fgetc(writer.mFile), 'p');
}

TEST_F(PRFileLogWriterTest, AfterASuccessfulInitAFailedOneIsRetriedOnlyOnceItsPeriodIsOver) {
    ASSERT_EQ(Init(0, 60), RESULT_OK);
    PRFileLogParam param = {dir.File("sub/log"), 0, 60};
    CaptureStderr();
    EXPECT_EQ(writer.Init(&param), RESULT_FAILURE);
    std::filesystem::create_directory(dir.File("sub"));
    TheWallClock().seconds += 60;
    EXPECT_EQ(WriteTo(writer, 2, "p", "lost"), RESULT_FAILURE);
    TheWallClock().seconds += 1;
    EXPECT_EQ(WriteTo(writer, 2, "p", "found"), RESULT_OK);
    GetCapturedStderr();
    EXPECT_EQ(Contents("sub/log_2024_03_07_09_05_02_041"), "p:found\n");
}

}  // namespace
