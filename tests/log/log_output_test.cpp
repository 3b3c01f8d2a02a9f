#include "log/log_output.h"

#include <gtest/gtest.h>

using namespace audio_filter::internal;

namespace {

std::string Printed(const char* prefix, const char* format) {
    testing::internal::CaptureStdout();
    PrintLogMessage(stdout, prefix, format, nullptr);
    return testing::internal::GetCapturedStdout();
}

TEST(LogOutput, WithoutArgumentsTheConversionsOfAFormatArePrintedVerbatim) {
    EXPECT_EQ(Printed("p", "plain"), "p:plain\n");
    EXPECT_EQ(Printed("p", "100%% of %s, %d%%"), "p:100% of %s, %d%\n");
    EXPECT_EQ(Printed("p", "%"), "p:%\n");
    EXPECT_EQ(Printed("p", "%%%"), "p:%%\n");
    EXPECT_EQ(Printed("p", ""), "p:\n");
}

TEST(LogOutput, NullTextsPrintAsEmpty) {
    EXPECT_EQ(Printed(nullptr, nullptr), ":\n");
}

int PrintTwice(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    PrintLogMessage(stdout, "a", format, PackArguments(args));
    PrintLogMessage(stdout, "b", format, PackArguments(copy));
    va_end(copy);
    va_end(args);
    return 0;
}

TEST(LogOutput, AnArgumentListAndItsCopyPrintAllArguments) {
    testing::internal::CaptureStdout();
    PrintTwice("%d %s %.1f", 1, "two", 3.0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "a:1 two 3.0\nb:1 two 3.0\n");
}

}  // namespace
