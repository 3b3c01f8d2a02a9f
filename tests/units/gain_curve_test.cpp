#include "units/gain_curve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "units/plain_gain.h"

using namespace audio_filter::internal;

namespace {

constexpr int kGains = 33;

/// 33 gains from just above 0 to 1.
float GainNumber(int number) {
    return number == 0 ? 1e-6F : static_cast<float>(number) / (kGains - 1);
}

std::vector<short> AllSamples() {
    std::vector<short> samples;
    for (int x = -32768; x <= 32767; ++x) {
        samples.push_back(static_cast<short>(x));
    }
    return samples;
}

std::vector<short> MappedS16(float gain) {
    std::vector<short> samples = AllSamples();
    ApplyGain(MakeGainCurveS16(gain), {samples.data(), samples.size()});
    return samples;
}

std::vector<float> MappedFloat(float gain, std::vector<float> samples) {
    ApplyGain(MakeGainCurveFloat(gain), {samples.data(), samples.size()});
    return samples;
}

TEST(GainCurveS16, Every16BitSampleAt33GainsFollowsThePlainModel) {
    for (int number = 0; number < kGains; ++number) {
        const float gain = GainNumber(number);
        const std::vector<short> mapped = MappedS16(gain);
        for (int x = -32768; x <= 32767; ++x) {
            ASSERT_EQ(mapped[static_cast<std::size_t>(x + 32768)], PlainGain(gain, x))
                << "gain " << gain << ", sample " << x;
        }
    }
}

TEST(GainCurveS16, TheDefaultGainHasKnee9830AndSlopes2389And438) {
    const GainCurveS16 curve = MakeGainCurveS16(0.8F);
    EXPECT_EQ(curve.knee, 9830);
    EXPECT_EQ(curve.innerSlope, 2389);
    EXPECT_EQ(curve.outerSlope, 438);
    EXPECT_EQ(curve.offset, 9830 * 2389);
}

TEST(GainCurveS16, GainOneHasKnee8192AndInnerSlope3071) {
    const GainCurveS16 curve = MakeGainCurveS16(1.0F);
    EXPECT_EQ(curve.knee, 8192);
    EXPECT_EQ(curve.innerSlope, 3071);
}

TEST(GainCurveS16, TheKneeIsComputedInSinglePrecision) {
    EXPECT_EQ(MakeGainCurveS16(0x1.defefap-1F).knee, 8720);  // 8719 in double
}

TEST(GainCurveS16, TheDefaultGainMapsMinus1ToMinus3And1To2) {
    const std::vector<short> mapped = MappedS16(0.8F);
    EXPECT_EQ(mapped[32768 - 1], -3);
    EXPECT_EQ(mapped[32768], 0);
    EXPECT_EQ(mapped[32768 + 1], 2);
}

TEST(GainCurveS16, IsOddUpToTheShiftMonotonicAndInRange) {
    for (int number = 0; number < kGains; ++number) {
        const std::vector<short> mapped = MappedS16(GainNumber(number));
        for (int x = 1; x <= 32767; ++x) {
            const int above = mapped[static_cast<std::size_t>(32768 + x)];
            const int below = mapped[static_cast<std::size_t>(32768 - x)];
            ASSERT_TRUE(below == -above || below == -above - 1) << x;  // the shift rounds down
            ASSERT_GE(above, mapped[static_cast<std::size_t>(32768 + x - 1)]) << x;
            ASSERT_GE(above, 0);
        }
    }
}

std::vector<float> Ramp() {
    std::vector<float> samples;
    for (int i = -40'000; i <= 40'000; ++i) {
        samples.push_back(static_cast<float>(i) / 32'000.0F);
    }
    return samples;
}

TEST(GainCurveFloat, FollowsThePlainModelToTheBitAt33Gains) {
    const std::vector<float> ramp = Ramp();
    for (int number = 0; number < kGains; ++number) {
        const float gain = GainNumber(number);
        const std::vector<float> mapped = MappedFloat(gain, ramp);
        for (std::size_t i = 0; i < ramp.size(); ++i) {
            ASSERT_EQ(mapped[i], PlainGain(gain, ramp[i])) << "gain " << gain << " at " << ramp[i];
        }
    }
}

TEST(GainCurveFloat, TheDefaultGainHasKnee0_3AndTheRoundedProductAsOffset) {
    const GainCurveFloat curve = MakeGainCurveFloat(0.8F);
    EXPECT_EQ(curve.knee, 0.3F);
    EXPECT_EQ(curve.innerSlope, (1.0F - 0.3F) / 0.3F);
    EXPECT_EQ(curve.offset, curve.innerSlope * curve.knee);
    EXPECT_EQ(curve.outerSlope, 1.0F / curve.innerSlope);
}

TEST(GainCurveFloat, TheOffsetIsNotAlwaysOneMinusTheKnee) {
    int different = 0;
    for (int number = 1; number < 1000; ++number) {
        const GainCurveFloat curve = MakeGainCurveFloat(static_cast<float>(number) / 1000.0F);
        different += curve.offset != 1.0F - curve.knee ? 1 : 0;
    }
    EXPECT_GT(different, 0);
}

TEST(GainCurveFloat, AtTheKneeTheInnerSlopeApplies) {
    const GainCurveFloat curve = MakeGainCurveFloat(0.37F);
    const std::vector<float> mapped = MappedFloat(0.37F, {curve.knee, -curve.knee});
    EXPECT_EQ(mapped[0], curve.knee * curve.innerSlope);
    EXPECT_EQ(mapped[1], -(curve.knee * curve.innerSlope));
}

TEST(GainCurveFloat, IsOddToTheBitAndWithinMinus1To1) {
    const std::vector<float> ramp = Ramp();
    for (int number = 0; number < kGains; ++number) {
        const std::vector<float> mapped = MappedFloat(GainNumber(number), ramp);
        for (std::size_t i = 0; i < ramp.size(); ++i) {
            ASSERT_EQ(mapped[i], -mapped[ramp.size() - 1 - i]);
            ASSERT_TRUE(mapped[i] >= -1.0F && mapped[i] <= 1.0F);
        }
    }
}

TEST(GainCurveFloat, NaNMapsToMinus1AndInfinitiesToFullScale) {
    const float infinity = INFINITY;
    EXPECT_EQ(MappedFloat(0.8F, {NAN, infinity, -infinity}), (std::vector<float>{-1, 1, -1}));
}

TEST(ThreeSlopeGain, In16BitShiftsAndHalvesTowardsZero) {
    // Gain 0.5: shift 5461, edges 21845 and -21846.
    std::vector<short> samples = {100,   5461,  5462,   21845,  21846,
                                  32767, -5462, -21846, -21847, -32768};
    ApplyThreeSlopeGain(0.5F, PcmView<short>(samples.data(), samples.size()));
    EXPECT_EQ(samples, (std::vector<short>{200, 10922, 10923, 27306, 27306, 32767, -10923, -27307,
                                           -27307, -32768}));
}

TEST(ThreeSlopeGain, InFloatShiftsByAThirdOfTheGain) {
    // Gain 0.75: shift 0.25, edges 0.5 and -0.5.
    std::vector<float> samples = {0.125F, 0.25F, 0.375F, 0.75F, -0.375F, -0.75F, 3.0F, -3.0F};
    ApplyThreeSlopeGain(0.75F, PcmView<float>(samples.data(), samples.size()));
    EXPECT_EQ(samples, (std::vector<float>{0.25F, 0.5F, 0.625F, 0.875F, -0.625F, -0.875F, 1, -1}));
}

TEST(ThreeSlopeGain, In16BitTheShiftIsComputedInSinglePrecision) {
    std::vector<short> samples = {5000};
    ApplyThreeSlopeGain(0x1.8006p-14F, PcmView<short>(samples.data(), 1));
    EXPECT_EQ(samples[0], 5001);  // shift 1; in double it is 0
}

TEST(ThreeSlopeGain, FollowsThePlainModelAtUnevenGains) {
    for (const float gain : {0.001F, 0.005F, 0.1F, 0.333F, 0.7F, 0.999F, 1.0F}) {
        std::vector<short> samples = AllSamples();
        ApplyThreeSlopeGain(gain, PcmView<short>(samples.data(), samples.size()));
        for (int x = -32768; x <= 32767; ++x) {
            ASSERT_EQ(samples[static_cast<std::size_t>(x + 32768)], PlainThreeSlopeGain(gain, x))
                << gain << " at " << x;
        }

        const auto third = static_cast<float>(static_cast<double>(gain) * 0.3333333333333333);
        const float edge = 2.0F * third;
        std::vector<float> in = Ramp();
        in.insert(in.end(), {1.0F - edge, edge - 1.0F, third, -third, NAN});
        std::vector<float> floats = in;
        ApplyThreeSlopeGain(gain, PcmView<float>(floats.data(), floats.size()));
        for (std::size_t i = 0; i < in.size(); ++i) {
            ASSERT_EQ(floats[i], PlainThreeSlopeGain(gain, in[i])) << gain << " at " << in[i];
        }
    }
}

}  // namespace
