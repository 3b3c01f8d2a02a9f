#include "host/block_sizes.h"

#include <gtest/gtest.h>

#include <set>

namespace {

TEST(BlockSizes, From1To1000MsAndRandomWithASeedAreAccepted) {
    for (const char* text : {"1", "10", "1000", "random:0", "random:7", "random:4294967295"}) {
        EXPECT_TRUE(BlockSizes::Parse(text)) << text;
    }
    for (const char* text : {"", "0", "1001", "-1", "+1", "1.5", "10ms", " 10", "0x10", "ten",
                             "random", "random:", "random:-1", "random:x", "random:7 ",
                             "random:4294967296", "Random:7", "99999999999999999999"}) {
        EXPECT_FALSE(BlockSizes::Parse(text)) << text;
    }
}

TEST(BlockSizes, TenMsAre441FramesAt44100HzAndNeverLessThanOne) {
    EXPECT_EQ(BlockSizes::Parse("10")->Next(44100), 441U);
    EXPECT_EQ(BlockSizes::Parse("10")->Next(11025), 110U);
    EXPECT_EQ(BlockSizes::Parse("1000")->Next(11025), 11025U);
    EXPECT_EQ(BlockSizes::Parse("1")->Next(8000), 8U);
    EXPECT_EQ(BlockSizes::Parse("1")->Next(50), 1U);
    EXPECT_EQ(BlockSizes::Parse("1000")->Next(768000), 768000U);
}

TEST(BlockSizes, RandomBlocksLieBetween1MsAndOneSecondAndDiffer) {
    for (const int rate : {1, 999, 8000, 48000}) {
        BlockSizes sizes = *BlockSizes::Parse("random:5");
        std::set<std::size_t> seen;
        for (int i = 0; i < 1000; ++i) {
            const std::size_t frames = sizes.Next(rate);
            ASSERT_GE(frames, std::max<std::size_t>(1, static_cast<std::size_t>(rate) / 1000));
            ASSERT_LE(frames, static_cast<std::size_t>(rate));
            seen.insert(frames);
        }
        EXPECT_GT(seen.size(), rate > 1 ? 300U : 0U);
    }
}

TEST(BlockSizes, EqualSeedsGiveEqualSizesAndOtherSeedsOthers) {
    const auto first = [](const char* text) {
        BlockSizes sizes = *BlockSizes::Parse(text);
        std::vector<std::size_t> frames(20);
        for (std::size_t& size : frames) {
            size = sizes.Next(48000);
        }
        return frames;
    };
    EXPECT_EQ(first("random:5"), first("random:5"));
    EXPECT_NE(first("random:5"), first("random:6"));
}

}  // namespace
