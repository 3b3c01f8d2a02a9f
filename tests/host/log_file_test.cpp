#include "host/log_file.h"

#include <gtest/gtest.h>

#include "audio_filter/audio_filter.h"
#include "host/failure.h"
#include "support/temp_dir.h"

namespace {

TEST(LogFile, HoldsTheLinesThatTheLibraryWritesWhileItLivesUnderItsOwnName) {
    const TempDir dir;
    const std::string path = dir.File("filter.log");
    AudioFilter filter;
    {
        const LogFile log(path);
        ProcessSwitchMap switches = {{AP_GAIN, true}};
        filter.Init(32000, 1, SAMPLE_FMT_S16, &switches);
    }
    filter.Clear();
    EXPECT_EQ(dir.Names(), std::vector<std::string>{"filter.log"});
    const std::string text = ReadFile(path);
    EXPECT_NE(text.find("AP_GAIN turn on"), std::string::npos) << text;
    EXPECT_EQ(text.find("Audio filter is cleared"), std::string::npos) << "said too late";
}

TEST(LogFile, StartsAnewEachTime) {
    const TempDir dir;
    const std::string path = dir.File("filter.log");
    WriteFile(path, "what was there");
    { const LogFile log(path); }
    EXPECT_EQ(ReadFile(path).find("what was there"), std::string::npos);
    { const LogFile log(path); }
    EXPECT_EQ(dir.Names(), std::vector<std::string>{"filter.log"});
}

TEST(LogFile, OneThatCannotBeWrittenIsAFailureAndLeavesNothing) {
    const TempDir dir;
    try {
        const LogFile log(dir.File("no/such/filter.log"));
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.what(), dir.File("no/such/filter.log") + ": cannot be written");
    }
    EXPECT_TRUE(dir.Names().empty());
}

}  // namespace
