#include "log/pr_console_log_writer.h"

#include <gtest/gtest.h>

#include "common/result_code.h"

#include "variable_arguments.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

TEST(PRConsoleLogWriter, Type0PrintsPrefixColonMessageNewlineToStandardOutput) {
    PRConsoleLogWriter writer(1);
    PRConsoleLogParam param = {0};
    ASSERT_EQ(writer.Init(&param), RESULT_OK);
    CaptureStdout();
    EXPECT_EQ(WriteTo(writer, 1, "prefix", "%d of %s", 3, "four"), RESULT_OK);
    EXPECT_EQ(GetCapturedStdout(), "prefix:3 of four\n");
}

TEST(PRConsoleLogWriter, Type1PrintsToStandardError) {
    PRConsoleLogWriter writer(1);
    PRConsoleLogParam param = {1};
    ASSERT_EQ(writer.Init(&param), RESULT_OK);
    CaptureStderr();
    EXPECT_EQ(WriteTo(writer, 4, "p", "m"), RESULT_OK);
    EXPECT_EQ(GetCapturedStderr(), "p:m\n");
}

TEST(PRConsoleLogWriter, Type2PrintsTheTypeMessageAndLaterWritesReturnMinus1) {
    PRConsoleLogWriter writer(1);
    PRConsoleLogParam param = {2};
    CaptureStderr();
    EXPECT_EQ(writer.Init(&param), RESULT_FAILURE);
    EXPECT_EQ(GetCapturedStderr(), "InitParam error nType=0 stdout, nType=1 stderr now nType=2");
    EXPECT_EQ(WriteTo(writer, 4, "p", "m"), RESULT_FAILURE);
    EXPECT_EQ(WriteTo(writer, 4, "p", "m"), RESULT_FAILURE);
}

TEST(PRConsoleLogWriter, ASecondInitWithType2LeavesNoStream) {
    PRConsoleLogWriter writer(1);
    PRConsoleLogParam param = {0};
    ASSERT_EQ(writer.Init(&param), RESULT_OK);
    param.nType = 2;
    CaptureStderr();
    EXPECT_EQ(writer.Init(&param), RESULT_FAILURE);
    GetCapturedStderr();
    CaptureStdout();
    EXPECT_EQ(WriteTo(writer, 4, "p", "m"), RESULT_FAILURE);
    EXPECT_EQ(GetCapturedStdout(), "");
}

TEST(PRConsoleLogWriter, ASecondInitWithANullBlockKeepsTheStream) {
    PRConsoleLogWriter writer(1);
    PRConsoleLogParam param = {0};
    ASSERT_EQ(writer.Init(&param), RESULT_OK);
    CaptureStderr();
    EXPECT_EQ(writer.Init(nullptr), RESULT_FAILURE);
    GetCapturedStderr();
    CaptureStdout();
    EXPECT_EQ(WriteTo(writer, 1, "p", "m"), RESULT_OK);
    EXPECT_EQ(GetCapturedStdout(), "p:m\n");
}

TEST(PRConsoleLogWriter, ANullBlockPrintsInitParamError) {
    PRConsoleLogWriter writer(1);
    CaptureStderr();
    EXPECT_EQ(writer.Init(nullptr), RESULT_FAILURE);
    EXPECT_EQ(GetCapturedStderr(), "InitParam error\n");
    EXPECT_EQ(WriteTo(writer, 4, "p", "m"), RESULT_FAILURE);
}

TEST(PRConsoleLogWriter, BelowItsLevelItPrintsNothingAndReturns0EvenWithNoStream) {
    PRConsoleLogWriter writer(3);
    EXPECT_EQ(WriteTo(writer, 2, "p", "m"), RESULT_OK);
    EXPECT_EQ(WriteTo(writer, 3, "p", "m"), RESULT_FAILURE);
    PRConsoleLogParam param = {0};
    writer.Init(&param);
    EXPECT_EQ(writer.SetLevel(4), 0);
    CaptureStdout();
    EXPECT_EQ(WriteTo(writer, 3, "p", "quiet"), RESULT_OK);
    EXPECT_EQ(WriteTo(writer, 4, "p", "loud"), RESULT_OK);
    EXPECT_EQ(GetCapturedStdout(), "p:loud\n");
}

TEST(PRConsoleLogWriter, DestroyLeavesTheStreamInUse) {
    PRConsoleLogWriter writer(1);
    PRConsoleLogParam param = {0};
    writer.Init(&param);
    writer.Destroy();
    CaptureStdout();
    EXPECT_EQ(WriteTo(writer, 1, "p", "m"), RESULT_OK);
    EXPECT_EQ(GetCapturedStdout(), "p:m\n");
}

}  // namespace
