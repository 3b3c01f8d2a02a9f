#include "host/at_option.h"

#include <gtest/gtest.h>

namespace {

TEST(AtOption, ATimeIsSecondsMinutesOrHours) {
    EXPECT_EQ(ParseTime("0"), 0.0);
    EXPECT_EQ(ParseTime("3.5s"), 3.5);
    EXPECT_EQ(ParseTime("90"), 90.0);
    EXPECT_EQ(ParseTime("1:30"), 90.0);
    EXPECT_EQ(ParseTime("0:01:30.25s"), 90.25);
    EXPECT_EQ(ParseTime("2:00:01"), 7201.0);
    EXPECT_EQ(ParseTime("100:00"), 6000.0);
    for (const char* text :
         {"",     "s",   ":",   "1:",    ":1",  "1::2", "1:60", "1:2:3:4", "1.5:10", "-1", "1:-2",
          "1e10", "nan", "inf", "1:nan", "1e9", "1ms",  "0x1",  " 1",      "1 ",     "1h", "1ss"}) {
        EXPECT_FALSE(ParseTime(text)) << text;
    }
}

TEST(AtOption, AChangeIsATimeAndSettings) {
    const std::optional<SettingsChange> change = ParseAt("1:02:03.5:denoise=off,gain=0.4");
    ASSERT_TRUE(change);
    EXPECT_EQ(change->seconds, 3723.5);
    const std::vector<std::pair<std::string, std::string>> expected = {{"denoise", "off"},
                                                                       {"gain", "0.4"}};
    EXPECT_EQ(change->values, expected);
    EXPECT_EQ(ExplainAt("1:02:03.5:denoise=off,gain=0.4"), "");
    EXPECT_EQ(ParseAt("3.5s:mix=on")->seconds, 3.5);
}

TEST(AtOption, ARefusalNamesThePartThatIsWrong) {
    const auto expectPart = [](const char* text, const char* part) {
        EXPECT_FALSE(ParseAt(text)) << text;
        EXPECT_NE(ExplainAt(text).find(part), std::string::npos) << ExplainAt(text);
    };
    expectPart("soon:mix=on", "'soon' is not a time in seconds, m:s or h:m:s");
    expectPart("1:99:mix=on", "'1:99' is not a time");
    expectPart("1s", "a time or a setting is missing");
    expectPart("", "a time or a setting is missing");
    expectPart("mix=on", "a time or a setting is missing");
    expectPart("5:", "a time or a setting is missing");
    expectPart("1s:mix=on,volume=1", "'volume=1' is not denoise=0..3|off");
    expectPart("1s:gain=2", "'gain=2' is not");
    expectPart("1s:mix=on,", "ends with a comma");
    expectPart("1s:=,", "'=' is not");
}

}  // namespace
