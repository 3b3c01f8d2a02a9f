#include "units/phase_statistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace audio_filter::internal;

namespace {

TEST(PhaseStatistics, FloatSilenceIsStrictInDoublePrecision) {
    const auto silent = [](float left, float right) { return IsSilent(left, right); };
    // 0.016 as a float lies above the double 0.016.
    EXPECT_FALSE(silent(0.016F, 0.0F));
    EXPECT_FALSE(silent(-0.016F, 0.0F));
    EXPECT_FALSE(silent(0.0F, 0.016F));
    EXPECT_FALSE(silent(0.0F, -0.016F));
    const float below = std::nextafter(0.016F, 0.0F);
    EXPECT_TRUE(silent(below, below));
    EXPECT_TRUE(silent(-below, -below));
    EXPECT_FALSE(silent(NAN, 0.0F));
    EXPECT_FALSE(silent(0.0F, NAN));
}

TEST(PhaseStatistics, SixteenBitSilenceIncludes491InBothChannels) {
    const auto silent = [](int left, int right) {
        return IsSilent(static_cast<short>(left), static_cast<short>(right));
    };
    EXPECT_TRUE(silent(491, 491));
    EXPECT_TRUE(silent(-491, -491));
    EXPECT_FALSE(silent(492, 0));
    EXPECT_FALSE(silent(-492, 0));
    EXPECT_FALSE(silent(0, 492));
    EXPECT_FALSE(silent(0, -492));
    EXPECT_FALSE(silent(-32768, 0));
    EXPECT_FALSE(silent(491, 492));
    EXPECT_FALSE(silent(-491, -492));
}

TEST(PhaseStatistics, EqualSignsAreInPhaseOppositeSignsOpposedAndAZeroNeither) {
    EXPECT_TRUE(IsInPhase<short>(500, 1));
    EXPECT_TRUE(IsInPhase<short>(-500, -1));
    EXPECT_FALSE(IsInPhase<short>(500, -1));
    EXPECT_FALSE(IsInPhase<short>(500, 0));
    EXPECT_FALSE(IsInPhase<short>(0, 500));
    EXPECT_FALSE(IsInPhase<short>(-500, 0));
    EXPECT_FALSE(IsInPhase<short>(0, -500));
    EXPECT_TRUE(IsOpposed<float>(0.5F, -0.1F));
    EXPECT_TRUE(IsOpposed<float>(-0.5F, 0.1F));
    EXPECT_FALSE(IsOpposed<float>(0.5F, 0.1F));
    EXPECT_FALSE(IsOpposed<float>(0.0F, 0.1F));
    EXPECT_FALSE(IsOpposed<float>(0.0F, -0.1F));
    EXPECT_FALSE(IsOpposed<float>(0.1F, 0.0F));
    EXPECT_FALSE(IsOpposed<float>(-0.1F, 0.0F));
}

TEST(PhaseStatistics, EveryFrameOfAPlanarBlockIsVisitedOnceWithItsValuesBeforeNegation) {
    std::vector<short> samples = {1, 2, 3, -1, -2, -3};
    std::vector<int> seen;
    ForEachFrame(PcmView<short>(samples.data(), 6), {3, true}, true,
                 [&seen](short left, short right) {
                     seen.push_back(left);
                     seen.push_back(right);
                 });
    EXPECT_EQ(seen, (std::vector<int>{1, -1, 2, -2, 3, -3}));
    EXPECT_EQ(samples, (std::vector<short>{-1, -2, -3, -1, -2, -3}));
}

}  // namespace
