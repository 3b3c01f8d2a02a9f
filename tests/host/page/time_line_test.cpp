#include "host/page/time_line.h"

#include <gtest/gtest.h>

namespace {

using Kind = StreamNotice::Kind;

Report TenSeconds() {
    Report report = {};
    report.duration = 10.0;
    report.settings = {{0.0, {}}};
    return report;
}

std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) {
        ++count;
    }
    return count;
}

TEST(TimeLine, MusicWithoutAnEndLastsToTheEndOfTheRecording) {
    Report report = TenSeconds();
    report.notices = {{1.0, "music begins", Kind::kMusic, true},
                      {2.5, "music ends", Kind::kMusic, false},
                      {3.0, "reversed", Kind::kReversed, true},
                      {7.0, "music begins", Kind::kMusic, true}};
    const std::vector<Bar> bars = MusicBars(report);
    ASSERT_EQ(bars.size(), 2U);
    EXPECT_EQ(bars[0].begin, 1.0);
    EXPECT_EQ(bars[0].end, 2.5);
    EXPECT_EQ(bars[1].begin, 7.0);
    EXPECT_EQ(bars[1].end, 10.0);
}

TEST(TimeLine, AnInvertedChannelIsListedOnceWithItsSource) {
    Report report = TenSeconds();
    report.inputs = {"a.wav", "b.wav"};
    report.notices = {{1.0, "left channel reversed", Kind::kReversed, true}};
    report.corrected = {{1.0, 3.0, 1}};
    EXPECT_NE(EventTable(report).find("1 s</th><td>source 2: left channel inverted until 3 s"),
              std::string::npos);
    EXPECT_EQ(EventTable(report).find("left channel reversed"), std::string::npos);
    EXPECT_NE(TimeLinePlot(report, {}).find("1 s to 3 s: source 2: left channel inverted"),
              std::string::npos);
}

TEST(TimeLine, TheTableListsSettingsAndVerdictsInOrderOfTime) {
    Report report = TenSeconds();
    report.settings.push_back({4.0, {3, std::nullopt, PhaseMode::kOff, true, false}});
    report.notices = {{2.0, "music begins", Kind::kMusic, true}};
    const std::string table = EventTable(report);
    const std::size_t music = table.find("2 s</th><td>music begins");
    const std::size_t change = table.find("4 s</th><td>settings: suppression level 3");
    ASSERT_NE(music, std::string::npos);
    ASSERT_NE(change, std::string::npos);
    EXPECT_LT(music, change);
}

TEST(TimeLine, Of100000EventsTheFirst400AreListed) {
    Report report = TenSeconds();
    for (int i = 0; i < 100000; ++i) {
        report.notices.push_back({i * 1e-4, "music", Kind::kMusic, i % 2 == 0});
    }
    const std::string table = EventTable(report);
    EXPECT_EQ(Count(table, "<tr>"), 1U + 400U + 1U);
    EXPECT_NE(table.find("and 99601 more"), std::string::npos);
    EXPECT_LT(TimeLinePlot(report, {}).size(), 100000U);
}

}  // namespace
