#include "host/unit_chain.h"

#include <gtest/gtest.h>

#include "host/failure.h"

namespace {

ChainSettings Off() {
    return {std::nullopt, std::nullopt, false};
}

TEST(UnitChain, ProcessesRatesThatTheSuppressorTakesAsTheyAreAndOthersAt32000) {
    for (const int rate : {8000, 16000, 32000, 44100}) {
        EXPECT_EQ(UnitChain::ProcessingRate(ChainSettings{}, rate), rate);
    }
    for (const int rate : {1000, 11025, 22050, 31999, 32001, 44099, 48000, 96000}) {
        EXPECT_EQ(UnitChain::ProcessingRate(ChainSettings{}, rate), 32000) << rate;
        EXPECT_EQ(UnitChain::ProcessingRate(Off(), rate), rate);
    }
}

TEST(UnitChain, NothingInIsNothingOut) {
    UnitChain chain({3, 0.5F, true}, {32000, 2, SampleKind::kS16});
    EXPECT_TRUE(chain.Process(std::vector<short>()).empty());
}

TEST(UnitChain, HoldsBack196FramesWithTheSuppressorAndNoneWithout) {
    EXPECT_EQ(UnitChain({3, {}, false}, {32000, 1, SampleKind::kS16}).DelayFrames(), 196);
    EXPECT_EQ(UnitChain({3, {}, false}, {44100, 1, SampleKind::kS16}).DelayFrames(), 196);
    EXPECT_EQ(UnitChain(Off(), {32000, 1, SampleKind::kS16}).DelayFrames(), 0);
}

TEST(UnitChain, ABlockThatAUnitRefusesIsAFailureWithItsCode) {
    UnitChain chain({{}, {}, true}, {32000, 2, SampleKind::kS16});
    try {
        chain.Process(std::vector<short>(3));  // not whole frames
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(), "phase check refused a block, code -1");
    }
}

}  // namespace
