#include "stream/fade.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace audio_filter::internal {

namespace {

TEST(Fade, MovesFrom0To1InEqualStepsOver4FramesAndStaysThere) {
    Fade fade(4);
    EXPECT_TRUE(fade.IsAt0());
    std::vector<float> weights(6);
    fade.Advance(true, weights);
    EXPECT_EQ(weights, (std::vector<float>{0.25F, 0.5F, 0.75F, 1.0F, 1.0F, 1.0F}));
    EXPECT_TRUE(fade.IsAt1());
    fade.Advance(false, weights);
    EXPECT_EQ(weights, (std::vector<float>{0.75F, 0.5F, 0.25F, 0.0F, 0.0F, 0.0F}));
    EXPECT_TRUE(fade.IsAt0());
}

TEST(Fade, TurnsBackWhereItIs) {
    Fade fade(10);
    std::vector<float> weights(3);
    fade.Advance(true, weights);
    EXPECT_FALSE(fade.IsAt0());
    EXPECT_FALSE(fade.IsAt1());
    fade.Advance(false, weights);
    EXPECT_EQ(weights, (std::vector<float>{0.2F, 0.1F, 0.0F}));
}

TEST(Fade, StartJumpsToAnEnd) {
    Fade fade(100);
    fade.Start(true);
    EXPECT_TRUE(fade.IsAt1());
    fade.Start(false);
    EXPECT_TRUE(fade.IsAt0());
}

TEST(Fade, ACrossfadeAtAnEndIsThatSignalToTheBitAndTreatsNaNAndInfinitiesAs0) {
    const float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> a = {0.1F, -0.7F, infinity, std::nanf(""), 0.5F};
    const std::vector<float> b = {0.9F, 1e-30F, 0.2F, 0.3F, -infinity};
    std::vector<float> out(5);
    Crossfade(a, b, std::vector<float>(5, 0.0F), out);
    EXPECT_EQ(out, (std::vector<float>{0.1F, -0.7F, 0.0F, 0.0F, 0.5F}));
    Crossfade(a, b, std::vector<float>(5, 1.0F), out);
    EXPECT_EQ(out, (std::vector<float>{0.9F, 1e-30F, 0.2F, 0.3F, 0.0F}));
    Crossfade(a, b, std::vector<float>(5, 0.5F), out);
    EXPECT_FLOAT_EQ(out[0], 0.5F);
    EXPECT_FLOAT_EQ(out[4], 0.25F);
}

}  // namespace

}  // namespace audio_filter::internal
