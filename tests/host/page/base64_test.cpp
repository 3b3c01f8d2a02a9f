#include "host/page/base64.h"

#include <gtest/gtest.h>

TEST(Base64, EncodesTheExamplesOfRfc4648) {
    EXPECT_EQ(Base64(""), "");
    EXPECT_EQ(Base64("f"), "Zg==");
    EXPECT_EQ(Base64("fo"), "Zm8=");
    EXPECT_EQ(Base64("foo"), "Zm9v");
    EXPECT_EQ(Base64("foobar"), "Zm9vYmFy");
    EXPECT_EQ(Base64("\xFF\xFE\xFD"), "//79");
}
