#include "stream/rate_plan.h"

#include <gtest/gtest.h>

namespace audio_filter::internal {

namespace {

TEST(RatePlan, EveryRateOf8000To192000HzRunsTheSuppressorAt24000To48000Hz) {
    for (int rate = 8000; rate <= 192000; ++rate) {
        const RatePlan plan = RatePlan::For(rate);
        const double suppressor = static_cast<double>(rate) * plan.up / plan.down;
        ASSERT_GE(suppressor, 24000.0) << rate;
        ASSERT_LE(suppressor, 48000.0) << rate;
        ASSERT_TRUE(plan.up == 1 || plan.down == 1) << rate;
        ASSERT_EQ(plan.Resamples(), rate <= 24000 || rate > 48000) << rate;
    }
}

TEST(RatePlan, EveryBlockIsAWholeNumberOf16FramesUpToTheLongest) {
    for (int rate = 8000; rate <= 192000; ++rate) {
        const RatePlan plan = RatePlan::For(rate);
        const std::size_t frames = plan.BlockFrames();
        ASSERT_EQ(frames * static_cast<std::size_t>(plan.up),
                  kBlockSamples * static_cast<std::size_t>(plan.down))
            << rate;
        ASSERT_EQ(frames % 16, 0U) << rate;
        ASSERT_LE(frames, kMaxBlockFrames) << rate;
    }
}

}  // namespace

}  // namespace audio_filter::internal
