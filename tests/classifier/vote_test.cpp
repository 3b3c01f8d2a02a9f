#include "classifier/vote.h"

#include <gtest/gtest.h>

#include <vector>

#include "classifier/plain_model.h"
#include "support/seed.h"

using namespace audio_filter::internal;

namespace {

using Votes = std::vector<unsigned char>;

TEST(Vote, ThirtyMusicVerdictsOutweighOneOfSpeech) {
    EXPECT_TRUE(Vote(Votes(30, 1), false));
    EXPECT_FALSE(Vote(Votes(30, 0), true));
}

TEST(Vote, EachEntryIsWeightedByTheLengthOfTheRunItEnds) {
    EXPECT_TRUE(Vote(Votes{0, 1, 1}, false));        // 1 + 2 against 1 + 1
    EXPECT_FALSE(Vote(Votes{1, 0, 0}, true));        // 1 + 1 against 1 + 2
    EXPECT_FALSE(Vote(Votes{1, 1, 0, 0, 0}, true));  // 1 + 2 + 1 against 1 + 2 + 3
    EXPECT_TRUE(Vote(Votes{0, 1, 1, 1, 0}, false));  // 1 + 2 + 3 against 1 + 1 + 1
}

TEST(Vote, TheCurrentVerdictCountsOnceAndExtendsNoRun) {
    EXPECT_TRUE(Vote(Votes{0, 1, 0, 1}, true));
    EXPECT_FALSE(Vote(Votes{0, 1, 0, 1}, false));
    EXPECT_FALSE(Vote(Votes{0, 0, 1}, true));  // 3 against 2
}

TEST(Vote, ATieIsNotMusic) {
    EXPECT_FALSE(Vote(Votes{1}, false));
    EXPECT_FALSE(Vote(Votes{0}, true));
    EXPECT_FALSE(Vote(Votes{0, 1, 0}, true));
}

TEST(Vote, WithoutAHistoryIsTheCurrentVerdict) {
    EXPECT_TRUE(Vote({}, true));
    EXPECT_FALSE(Vote({}, false));
}

TEST(Vote, TenThousandRandomHistoriesFollowThePlainModelAndWithoutATieAnIntegerCount) {
    std::mt19937 random = SeededRandom();
    for (int round = 0; round < 10000; ++round) {
        const int length = RandomInt(random, 1, 40);
        const int flips = RandomInt(random, 1, 4);
        Votes votes;
        std::vector<bool> past;
        int scores[2] = {0, 0};
        int run = 0;
        for (int i = 0; i < length; ++i) {
            const bool repeat = i > 0 && RandomInt(random, 0, flips) > 0;
            const bool verdict = repeat ? past.back() : RandomInt(random, 0, 1) == 1;
            run = i > 0 && verdict == past.back() ? run + 1 : 1;
            scores[verdict ? 1 : 0] += run;
            votes.push_back(verdict ? 1 : 0);
            past.push_back(verdict);
        }
        const bool current = RandomInt(random, 0, 1) == 1;
        scores[current ? 1 : 0] += 1;
        const bool voted = Vote(votes, current);
        ASSERT_EQ(voted, PlainVote(past, current, votes.size()));
        if (scores[0] != scores[1]) {
            ASSERT_EQ(voted, scores[1] > scores[0]);
        }
    }
}

}  // namespace
