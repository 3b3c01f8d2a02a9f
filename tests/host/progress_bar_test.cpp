#include "host/progress_bar.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

TEST(ProgressBar, RedrawsAtEveryPercentAndClearsItselfAtTheEnd) {
    std::ostringstream out;
    {
        ProgressBar bar(&out, 1000);
        bar.Advance(500);
        bar.Advance(4);  // still 50 %
        EXPECT_EQ(out.str(), "\r[####################....................]  50%");
        bar.Advance(1000);
        EXPECT_EQ(out.str().substr(out.str().rfind('\r')),
                  "\r[########################################] 100%");
    }
    EXPECT_EQ(out.str().substr(out.str().size() - 49), "\r" + std::string(47, ' ') + "\r");
}

TEST(ProgressBar, WithoutATerminalOrATotalNothingIsDrawn) {
    std::ostringstream out;
    {
        ProgressBar silent(nullptr, 1000);
        silent.Advance(10);
        ProgressBar unknown(&out, std::nullopt);
        unknown.Advance(10);
    }
    EXPECT_EQ(out.str(), "");
}

}  // namespace
