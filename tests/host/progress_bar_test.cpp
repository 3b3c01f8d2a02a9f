#include "host/progress_bar.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

class ProgressBarTest : public testing::Test {
protected:
    ProgressBar::Seconds Clock() {
        return [this] { return seconds; };
    }
    std::string LastBar() const { return out.str().substr(out.str().rfind('\r')); }

    std::ostringstream out;
    double seconds = 100.0;
    ProgressOutput terminal = {&out, [] { return 80; }, ""};
    ProgressOutput pipe = {&out, nullptr, "talk.wav"};
};

TEST_F(ProgressBarTest, RedrawsAtEveryPercentOrSecondAndClearsItselfAtTheEnd) {
    {
        ProgressBar bar(terminal, 1000, Clock());
        bar.Advance(500);
        bar.Advance(4);  // still 50 %
        EXPECT_EQ(out.str(), "\r[####################....................]  50%");
        seconds += 10.0;
        bar.Advance(0);
        EXPECT_EQ(LastBar(), "\r[####################....................]  50%  0:10 left");
        bar.Advance(1000);
        EXPECT_EQ(LastBar(), "\r[########################################] 100%  0:00 left");
    }
    EXPECT_EQ(out.str().substr(out.str().size() - 60), "\r" + std::string(58, ' ') + "\r");
}

TEST_F(ProgressBarTest, TheTimeLeftIsInMinutesOrHours) {
    ProgressBar bar(terminal, 1000, Clock());
    seconds += 100.0;
    bar.Advance(100);
    EXPECT_NE(LastBar().find(" 10%  15:00 left"), std::string::npos) << LastBar();
    seconds += 900.0;
    bar.Advance(1);
    EXPECT_NE(LastBar().find(" 10%  2:28:21 left"), std::string::npos) << LastBar();
}

TEST_F(ProgressBarTest, TheBarStaysWithinTheTerminalsWidth) {
    const auto at = [this](int (*width)()) {
        seconds = 100.0;
        terminal.terminalWidth = width;
        ProgressBar bar(terminal, 1000, Clock());
        seconds += 4000.0;
        bar.Advance(500);
        return LastBar().substr(1);
    };
    EXPECT_EQ(at([] { return 40; }), "[#########.........]  50%  1:06:40 left");
    EXPECT_EQ(at([] { return 30; }), "[####....]  50%  1:06:40 left");
    EXPECT_EQ(at([] { return 20; }), " 50%");
    EXPECT_EQ(at([] { return 3; }), " 5");
    EXPECT_EQ(at([] { return 0; }), "");
}

TEST_F(ProgressBarTest, ElsewhereALineIsPrintedEvery10PercentButNotWithin2Seconds) {
    {
        ProgressBar bar(pipe, 1000, Clock());
        bar.Advance(150);  // at once
        seconds += 2.0;
        bar.Advance(20);
        bar.Advance(100);  // 27 %, too soon
        seconds += 5.0;
        bar.Advance(10);
        bar.Advance(0);
        seconds += 9.0;
        bar.Advance(720);  // the end speaks for itself
    }
    EXPECT_EQ(out.str(), "talk.wav: 10 %, 0:10 left\ntalk.wav: 20 %, 0:18 left\n");
}

TEST_F(ProgressBarTest, WithoutAnOutputOrATotalNothingIsShown) {
    {
        ProgressBar silent({}, 1000, Clock());
        silent.Advance(10);
        ProgressBar unknown(terminal, std::nullopt, Clock());
        unknown.Advance(10);
    }
    EXPECT_EQ(out.str(), "");
}

}  // namespace
