#include "host/help/wrap_text.h"

#include <gtest/gtest.h>

namespace {

TEST(WrapText, BreaksBetweenWordsAtTheLatestColumnThatFits) {
    EXPECT_EQ(WrapText("one two three", 80), "one two three");
    EXPECT_EQ(WrapText("one two three", 13), "one two three");
    EXPECT_EQ(WrapText("one two three", 12), "one two\nthree");
    EXPECT_EQ(WrapText("one two three", 3), "one\ntwo\nthree");
    EXPECT_EQ(WrapText("one longer-than-that two", 6), "one\nlonger-than-that\ntwo");
    EXPECT_EQ(WrapText("", 10), "");
}

}  // namespace
