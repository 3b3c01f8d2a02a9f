#include "stream/gain_stage.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "signals.h"
#include "support/bytes.h"

namespace audio_filter::internal {

namespace {

std::vector<float> Curve(std::vector<float> samples, float gain) {
    AudioGain curve;
    curve.SetGain(gain);
    curve.Process(BytesOf(samples), ByteCount(samples), SAMPLE_FMT_FLT);
    return samples;
}

TEST(GainStage, WithoutAGainEveryBitStays) {
    GainStage stage(false, 480);
    std::vector<float> samples = WhiteNoise(320, 2.0F, 1);
    samples[5] = std::nanf("7");
    samples[6] = -0.0F;
    const std::vector<float> before = samples;
    stage.Process(samples, {});
    EXPECT_TRUE(SameBits(samples, before));
}

TEST(GainStage, AChangeCrossfadesOver480FramesInSpiteOfBlocksOf320) {
    GainStage stage(false, 480);
    const std::vector<float> in(320, 0.1F);
    const float full = Curve(in, 1.0F)[0];
    std::vector<float> out;
    for (int block = 0; block < 3; ++block) {
        std::vector<float> samples = in;
        stage.Process(samples, 1.0F);
        out.insert(out.end(), samples.begin(), samples.end());
    }
    for (std::size_t i = 0; i < out.size(); ++i) {
        const float weight = std::min(1.0F, static_cast<float>(i + 1) / 480.0F);
        ASSERT_NEAR(out[i], 0.1F + (full - 0.1F) * weight, 1e-6F) << i;
    }
}

TEST(GainStage, AChangeDuringACrossfadeWaitsForItsEnd) {
    GainStage stage(false, 480);
    stage.Start(0.0F);
    std::vector<float> out;
    for (const float gain : {1.0F, 0.0F, 0.0F, 0.0F, 0.0F}) {
        std::vector<float> samples(320, 0.1F);
        stage.Process(samples, gain);
        out.insert(out.end(), samples.begin(), samples.end());
    }
    const float full = Curve(std::vector<float>(1, 0.1F), 1.0F)[0];
    EXPECT_FLOAT_EQ(out[479], full);
    EXPECT_FLOAT_EQ(out[639], full);
    EXPECT_LT(out[640], full);
    EXPECT_FLOAT_EQ(out.back(), 0.1F);
}

TEST(GainStage, StartSetsTheGainWithoutACrossfade) {
    for (const bool s16 : {false, true}) {
        GainStage stage(s16, 480);
        stage.Start(0.5F);
        std::vector<float> samples(320, 0.25F);
        stage.Process(samples, 0.5F);
        EXPECT_EQ(samples, std::vector<float>(320, samples[0]));
        EXPECT_GT(samples[0], 0.26F);
    }
}

}  // namespace

}  // namespace audio_filter::internal
