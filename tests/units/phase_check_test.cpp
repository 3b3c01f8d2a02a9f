#include "units/phase_check.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "common/result_code.h"
#include "support/bytes.h"
#include "support/seed.h"
#include "units/plain_detectors.h"

namespace {

PhaseCheck ReadyCheck(int rate = 48000, bool planar = false) {
    PhaseCheck check;
    EXPECT_EQ(check.Init(rate, planar), RESULT_OK);
    return check;
}

template <typename Sample>
std::vector<Sample> Stereo(int frames, Sample left, Sample right) {
    std::vector<Sample> samples;
    for (int i = 0; i < frames; ++i) {
        samples.push_back(left);
        samples.push_back(right);
    }
    return samples;
}

template <typename Sample>
int Check(PhaseCheck& check, std::vector<Sample>& samples) {
    return check.Check(samples.data(), static_cast<int>(samples.size()));
}

template <typename Sample>
int Check2(PhaseCheck& check, std::vector<Sample>& samples) {
    return check.Check2(samples.data(), static_cast<int>(samples.size()));
}

TEST(PhaseCheck, InitTakes8000To48000Hz) {
    for (const int rate : {8000, 16000, 44100, 48000}) {
        PhaseCheck check;
        EXPECT_EQ(check.Init(rate, false), RESULT_OK) << rate;
        EXPECT_TRUE(check.IsInited());
        EXPECT_EQ(check.mMaxScore, rate * 10);
    }
    for (const int rate : {7999, 48001, 0, -8000, 96000, INT32_MIN, INT32_MAX}) {
        PhaseCheck check = ReadyCheck();
        EXPECT_EQ(check.Init(rate, false), RESULT_FAILURE) << rate;
        EXPECT_FALSE(check.IsInited());
        EXPECT_EQ(check.mSampleRate, 48000);
    }
}

TEST(PhaseCheck, SixteenBitFrame491Minus491IsSilent) {
    PhaseCheck check = ReadyCheck();
    std::vector<short> frame = {491, -491};
    EXPECT_EQ(Check(check, frame), RESULT_OK);
    EXPECT_EQ(check.GetSilenceRatio(), 1.0F);
    EXPECT_EQ(Check2(check, frame), RESULT_OK);
    EXPECT_EQ(check.mScore2, 0);
}

TEST(PhaseCheck, SixteenBitFrame492Minus491IsOpposedForCheckAndScores1InCheck2) {
    PhaseCheck check = ReadyCheck();
    std::vector<short> frame = {492, -491};
    Check(check, frame);
    EXPECT_EQ(check.GetOpposedPhaseRatio(), 1.0F);
    Check2(check, frame);
    EXPECT_EQ(check.mScore2, 1);
}

TEST(PhaseCheck, FloatFrame0_016And0IsOpposedForCheckAndScoresNothingInCheck2) {
    PhaseCheck check = ReadyCheck();
    std::vector<float> frame = {0.016F, 0.0F};
    Check(check, frame);
    EXPECT_EQ(check.mOpposed, 1U);
    EXPECT_EQ(check.mSilence, 0U);
    Check2(check, frame);
    EXPECT_EQ(check.mScore2, 0);
}

TEST(PhaseCheck, AFrameWithOneChannelAtZeroIsOpposedForCheckAndNothingForCheck2) {
    PhaseCheck check = ReadyCheck();
    std::vector<short> frames = {20000, 0, 0, -20000, -20000, 0, 0, 20000};
    Check(check, frames);
    EXPECT_EQ(check.mOpposed, 4U);
    Check2(check, frames);
    EXPECT_EQ(check.mScore2, 0);
}

TEST(PhaseCheck, CheckAt48000HzStartsNegatingAfterMoreThan24000FramesWereCounted) {
    PhaseCheck check = ReadyCheck();
    const std::vector<short> opposed = Stereo<short>(12000, 10000, -10000);
    std::vector<short> block = opposed;
    Check(check, block);  // 12000 frames
    EXPECT_EQ(block, opposed);
    Check(check, block);  // 24000: not more than half a second
    EXPECT_EQ(block, opposed);
    std::vector<short> one = {10000, -10000};
    Check(check, one);  // 24001, but the share is that of the call before
    EXPECT_EQ(one[0], 10000);
    Check(check, one);
    EXPECT_EQ(one, (std::vector<short>{-10000, -10000}));
}

TEST(PhaseCheck, Check2At48000HzStartsAbove288000AndStopsAt144000) {
    PhaseCheck check = ReadyCheck();
    std::vector<short> opposed = Stereo<short>(48000, 10000, -10000);
    for (int second = 0; second < 6; ++second) {
        Check2(check, opposed);
    }
    EXPECT_EQ(check.mScore2, 288000);
    std::vector<short> one = {10000, -10000};
    Check2(check, one);  // exactly 288000 is not above
    EXPECT_EQ(one[0], 10000);
    Check2(check, one);  // 288001 is
    EXPECT_EQ(one[0], -10000);

    check.mScore2 = 144002;
    std::vector<short> same = {10000, 10000};
    Check2(check, same);  // 144002 keeps it on
    EXPECT_EQ(same[0], -10000);
    EXPECT_EQ(check.mScore2, 144001);
    same[0] = 10000;
    Check2(check, same);  // 144001 keeps it on
    EXPECT_EQ(same[0], -10000);
    same[0] = 10000;
    Check2(check, same);  // 144000 ends it
    EXPECT_EQ(same[0], 10000);
    same[0] = 10000;
    check.mScore2 = 200000;
    Check2(check, same);  // and between the two bounds it stays off
    EXPECT_EQ(same[0], 10000);
}

TEST(PhaseCheck, AnOddCountReturnsMinus1AndLeavesTheBuffer) {
    PhaseCheck check = ReadyCheck();
    check.mOpposedShare = 1.0F;
    check.mScore2 = check.mMaxScore;
    std::vector<short> samples = {1000, 2000, 3000};
    std::vector<float> floats = {0.1F, 0.2F, 0.3F};
    for (const int count : {1, 3, -1, -3, INT32_MAX}) {
        EXPECT_EQ(check.Check(samples.data(), count), RESULT_FAILURE) << count;
        EXPECT_EQ(check.Check2(samples.data(), count), RESULT_FAILURE) << count;
        EXPECT_EQ(check.Check(floats.data(), count), RESULT_FAILURE) << count;
        EXPECT_EQ(check.Check2(floats.data(), count), RESULT_FAILURE) << count;
    }
    EXPECT_EQ(samples, (std::vector<short>{1000, 2000, 3000}));
    EXPECT_EQ(floats, (std::vector<float>{0.1F, 0.2F, 0.3F}));
    EXPECT_EQ(check.mTotal, 0U);
}

TEST(PhaseCheck, NotInitialisedReturnsMinus1AndLeavesTheBuffer) {
    PhaseCheck check;
    std::vector<short> samples = {1000, 2000};
    std::vector<float> floats = {0.1F, 0.2F};
    EXPECT_EQ(Check(check, samples), RESULT_FAILURE);
    EXPECT_EQ(Check2(check, samples), RESULT_FAILURE);
    EXPECT_EQ(Check(check, floats), RESULT_FAILURE);
    EXPECT_EQ(Check2(check, floats), RESULT_FAILURE);
    EXPECT_EQ(samples, (std::vector<short>{1000, 2000}));
}

TEST(PhaseCheck, ANullBufferWithACountReturnsMinus1) {
    PhaseCheck check = ReadyCheck();
    EXPECT_EQ(check.Check(static_cast<short*>(nullptr), 2), RESULT_FAILURE);
    EXPECT_EQ(check.Check2(static_cast<float*>(nullptr), 2), RESULT_FAILURE);
    EXPECT_EQ(check.Check(static_cast<float*>(nullptr), 0), RESULT_OK);
    EXPECT_EQ(check.mTotal, 0U);
}

TEST(PhaseCheck, NegativeEvenCountsDoNothing) {
    PhaseCheck check = ReadyCheck();
    check.mScore2 = check.mMaxScore;
    short s16 = 1000;
    float flt = 0.5F;
    for (const int count : {-2, -1000, INT32_MIN}) {
        EXPECT_EQ(check.Check(&s16, count), RESULT_OK);
        EXPECT_EQ(check.Check2(&s16, count), RESULT_OK);
        EXPECT_EQ(check.Check(&flt, count), RESULT_OK);
        EXPECT_EQ(check.Check2(&flt, count), RESULT_OK);
    }
    EXPECT_EQ(s16, 1000);
    EXPECT_EQ(check.mInPhaseRate, 0.0F) << "not renewed";
    EXPECT_FALSE(check.mInvert) << "not decided";
    EXPECT_EQ(check.mTotal, 0U);
}

TEST(PhaseCheck, EveryFieldOfANewUnitIsInitialised) {
    PhaseCheck check;
    EXPECT_FALSE(check.IsInited());
    EXPECT_FALSE(check.mPlanar);
    EXPECT_FALSE(check.mInvert);
    EXPECT_EQ(check.mSampleRate, 0);
    EXPECT_EQ(check.mMaxScore, 0);
    EXPECT_EQ(check.mScore2, 0);
    EXPECT_EQ(check.mScore, 0);
    EXPECT_EQ(check.mInPhaseRate, 0.0F);
    EXPECT_EQ(check.mOpposedRate, 0.0F);
    EXPECT_EQ(check.mOpposedShare, 0.0F);
    EXPECT_EQ(check.mSilenceRate, 0.0F);
    EXPECT_EQ(check.mTotal + check.mInPhase + check.mOpposed + check.mSilence, 0U);
}

TEST(PhaseCheck, CountZeroOnANewUnitStoresNaNInThe16BitRates) {
    PhaseCheck check = ReadyCheck();
    short sample = 0;
    EXPECT_EQ(check.Check(&sample, 0), RESULT_OK);
    EXPECT_TRUE(std::isnan(check.mInPhaseRate));
    EXPECT_TRUE(std::isnan(check.mOpposedRate));
    EXPECT_TRUE(std::isnan(check.mSilenceRate));
    EXPECT_EQ(check.mOpposedShare, 0.0F);
    EXPECT_EQ(check.GetInPhaseRatio(), 0.0F);
    PhaseCheck flt = ReadyCheck();
    float value = 0.0F;
    EXPECT_EQ(flt.Check(&value, 0), RESULT_OK);
    EXPECT_EQ(flt.mInPhaseRate, 0.0F);
}

TEST(PhaseCheck, Check2WithCountZeroStillDecidesByTheScore) {
    PhaseCheck check = ReadyCheck();
    check.mScore2 = 288001;  // more than six seconds
    short sample = 0;
    EXPECT_EQ(check.Check2(&sample, 0), RESULT_OK);
    EXPECT_TRUE(check.mInvert);
    check.mScore2 = 144000;
    float value = 0.0F;
    EXPECT_EQ(check.Check2(&value, 0), RESULT_OK);
    EXPECT_FALSE(check.mInvert);
}

TEST(PhaseCheck, PlanarCount8HasTheFrames0And4_1And5_2And6_3And7) {
    PhaseCheck check = ReadyCheck(8000, true);
    check.mOpposedShare = 1.0F;
    // In phase, opposed, silent, opposed; then all of the left half negated.
    std::vector<short> samples = {1000, 2000, 3, -4000, 500, -600, 7, 800};
    EXPECT_EQ(Check(check, samples), RESULT_OK);
    EXPECT_EQ(samples, (std::vector<short>{-1000, -2000, -3, 4000, 500, -600, 7, 800}));
    EXPECT_EQ(check.mInPhase, 1U);
    EXPECT_EQ(check.mOpposed, 2U);
    EXPECT_EQ(check.mSilence, 1U);
}

TEST(PhaseCheck, InterleavedFramesAreSamples2iAnd2iPlus1) {
    PhaseCheck check = ReadyCheck(8000, false);
    check.mOpposedShare = 1.0F;
    std::vector<short> samples = {1000, 500, 2000, -600, 3, 7, -4000, 800};
    EXPECT_EQ(Check(check, samples), RESULT_OK);
    EXPECT_EQ(samples, (std::vector<short>{-1000, 500, -2000, -600, -3, 7, 4000, 800}));
    EXPECT_EQ(check.mInPhase, 1U);
    EXPECT_EQ(check.mOpposed, 2U);
    EXPECT_EQ(check.mSilence, 1U);
}

TEST(PhaseCheck, ALeftSampleOfMinus32768StaysMinus32768WhenNegated) {
    PhaseCheck check = ReadyCheck();
    check.mOpposedShare = 1.0F;
    std::vector<short> samples = {-32768, 5};
    Check(check, samples);
    EXPECT_EQ(samples, (std::vector<short>{-32768, 5}));
    check.mScore2 = check.mMaxScore;
    Check2(check, samples);
    EXPECT_TRUE(check.mInvert);
    EXPECT_EQ(samples, (std::vector<short>{-32768, 5}));
}

TEST(PhaseCheck, CorrectionTurnsAFloatZeroIntoMinusZero) {
    PhaseCheck check = ReadyCheck();
    check.mOpposedShare = 0.9F;
    std::vector<float> samples = {0.0F, 0.5F};
    Check(check, samples);
    EXPECT_TRUE(std::signbit(samples[0]));
    EXPECT_EQ(samples[1], 0.5F);
}

TEST(PhaseCheck, FramesCountByTheirValuesBeforeTheCorrection) {
    PhaseCheck check = ReadyCheck();
    check.mOpposedShare = 0.9F;
    std::vector<short> opposed = Stereo<short>(10, 10000, -10000);
    Check(check, opposed);
    EXPECT_EQ(check.mOpposed, 10U);
    EXPECT_EQ(check.mInPhase, 0U);
    EXPECT_EQ(opposed, Stereo<short>(10, -10000, -10000));
}

TEST(PhaseCheck, TheDecisionComparesTheShareWith0_7InDoublePrecision) {
    PhaseCheck check = ReadyCheck();
    std::vector<short> samples = {10, 10};
    check.mOpposedShare = 0.7F;  // below the double 0.7
    Check(check, samples);
    EXPECT_EQ(samples[0], 10);
    check.mOpposedShare = std::nextafter(0.7F, 1.0F);
    Check(check, samples);
    EXPECT_EQ(samples[0], -10);
}

TEST(PhaseCheck, TheScoreCountsFramesThatLeaveOpposed) {
    PhaseCheck check = ReadyCheck();
    std::vector<short> opposed = Stereo<short>(5, 10000, -10000);
    Check(check, opposed);
    EXPECT_EQ(check.mScore, 5);
    check.mOpposedShare = 0.9F;
    std::vector<short> inPhase = Stereo<short>(7, 10000, 10000);
    Check(check, inPhase);
    EXPECT_EQ(check.mScore, 12);
    std::vector<short> quiet = Stereo<short>(7, 1, -1);
    Check(check, quiet);
    EXPECT_EQ(check.mScore, 12);
    check.mOpposedShare = 0.9F;
    opposed = Stereo<short>(20, 10000, -10000);
    Check(check, opposed);
    EXPECT_EQ(check.mScore, 0) << "bounded below once per call";
}

TEST(PhaseCheck, AScoreAbove20SecondsRestartsTheStatisticsAfterTheRates) {
    PhaseCheck check = ReadyCheck(8000);
    check.mScore = 160000 - 4;
    std::vector<short> opposed = Stereo<short>(4, 10000, -10000);
    Check(check, opposed);
    EXPECT_EQ(check.mScore, 160000) << "the bound itself does not restart";
    EXPECT_EQ(check.mTotal, 4U);
    opposed = Stereo<short>(4, 10000, -10000);
    Check(check, opposed);
    EXPECT_EQ(check.mScore, 0);
    EXPECT_EQ(check.mTotal, 0U);
    EXPECT_EQ(check.mOpposed, 0U);
    EXPECT_EQ(check.mOpposedRate, 1.0F) << "the rates are from before the restart";
    EXPECT_EQ(check.GetOpposedPhaseRatio(), 0.0F);
}

TEST(PhaseCheck, RatesOf16BitSamplesAreRenewedAndThoseOfFloatSamplesAreNot) {
    PhaseCheck check = ReadyCheck();
    std::vector<short> samples = {1000, 1000, 1000, -1000, 0, 0, 0, 0};
    Check(check, samples);
    EXPECT_EQ(check.mInPhaseRate, 0.25F);
    EXPECT_EQ(check.mOpposedRate, 0.25F);
    EXPECT_EQ(check.mSilenceRate, 0.5F);
    std::vector<float> floats = Stereo<float>(4, 0.5F, 0.5F);
    Check(check, floats);
    EXPECT_EQ(check.mInPhaseRate, 0.25F);
    EXPECT_EQ(check.mOpposedRate, 0.25F);
    EXPECT_EQ(check.mSilenceRate, 0.5F);
    EXPECT_EQ(check.GetInPhaseRatio(), 5.0F / 8.0F);
    EXPECT_EQ(check.GetOpposedPhaseRatio(), 1.0F / 8.0F);
    EXPECT_EQ(check.GetSilenceRatio(), 2.0F / 8.0F);
}

TEST(PhaseCheck, The16BitShareComesFromRoundedRatesAndTheFloatShareFromTheCounts) {
    int different = 0;
    for (std::uint64_t opposed = 70001; opposed < 70200; ++opposed) {
        PhaseCheck s16 = ReadyCheck(8000);
        s16.mTotal = 130003;
        s16.mInPhase = 30001;
        s16.mOpposed = opposed;
        PhaseCheck flt = s16;
        short sample = 0;
        float value = 0.0F;
        s16.Check(&sample, 0);
        flt.Check(&value, 0);
        const float rate = static_cast<float>(opposed) / 130003.0F;
        EXPECT_EQ(s16.mOpposedShare, rate / (rate + 30001.0F / 130003.0F));
        EXPECT_EQ(flt.mOpposedShare,
                  static_cast<float>(opposed) / static_cast<float>(30001 + opposed));
        different += s16.mOpposedShare != flt.mOpposedShare ? 1 : 0;
    }
    EXPECT_GT(different, 0);
}

TEST(PhaseCheck, At8001HzMoreThan4000_5FramesAreHalfASecond) {
    PhaseCheck check = ReadyCheck(8001);
    std::vector<short> opposed = Stereo<short>(4000, 10000, -10000);
    Check(check, opposed);
    EXPECT_EQ(check.mOpposedShare, 0.0F) << "4000 is not above 4000.5";
    opposed = Stereo<short>(1, 10000, -10000);
    Check(check, opposed);
    EXPECT_EQ(check.mOpposedShare, 1.0F);
}

TEST(PhaseCheck, ClearKeepsTheRatesAndTheScore) {
    PhaseCheck check = ReadyCheck();
    std::vector<short> opposed = Stereo<short>(30000, 10000, -10000);
    Check(check, opposed);
    Check2(check, opposed);
    check.mInvert = true;
    EXPECT_TRUE(check.Clear());
    EXPECT_FALSE(check.IsInited());
    EXPECT_FALSE(check.mInvert);
    EXPECT_EQ(check.mScore2, 0);
    EXPECT_EQ(check.mTotal + check.mInPhase + check.mOpposed + check.mSilence, 0U);
    EXPECT_EQ(check.mScore, 30000);
    EXPECT_EQ(check.mOpposedRate, 1.0F);
    EXPECT_EQ(check.mOpposedShare, 1.0F);
    EXPECT_EQ(check.Init(48000, true), RESULT_OK);
    EXPECT_EQ(check.mScore, 0);
    EXPECT_EQ(check.mOpposedRate, 0.0F);
    EXPECT_EQ(check.mOpposedShare, 0.0F);
    EXPECT_TRUE(check.mPlanar);
}

TEST(PhaseCheck, Check2AloneLeavesTheRatiosAt0) {
    PhaseCheck check = ReadyCheck();
    std::vector<float> samples = Stereo<float>(10, 0.5F, -0.5F);
    Check2(check, samples);
    EXPECT_EQ(check.GetInPhaseRatio(), 0.0F);
    EXPECT_EQ(check.GetOpposedPhaseRatio(), 0.0F);
    EXPECT_EQ(check.GetSilenceRatio(), 0.0F);
}

TEST(PhaseCheck, TheScoreOfCheck2IsBoundedAfterEveryFrame) {
    PhaseCheck check = ReadyCheck(8000);
    std::vector<short> samples = Stereo<short>(3, 10000, 10000);  // three down from 0
    samples.push_back(10000);
    samples.push_back(-10000);  // one up
    Check2(check, samples);
    EXPECT_EQ(check.mScore2, 1);
    check.mScore2 = 79999;
    samples = Stereo<short>(3, 10000, -10000);
    samples.push_back(10000);
    samples.push_back(10000);
    Check2(check, samples);
    EXPECT_EQ(check.mScore2, 79999);
}

TEST(PhaseCheck, ABlockAtAnOddAddressIsReadAndWrittenLikeAnyOther) {
    char bytes[13] = {};
    const short s16[4] = {1000, 2000, -3000, 4000};
    std::memcpy(bytes + 1, s16, sizeof(s16));
    PhaseCheck check = ReadyCheck();
    check.mOpposedShare = 1.0F;
    EXPECT_EQ(check.Check(reinterpret_cast<short*>(bytes + 1), 4), RESULT_OK);
    short corrected[4] = {};
    std::memcpy(corrected, bytes + 1, sizeof(corrected));
    EXPECT_EQ(corrected[0], -1000);
    EXPECT_EQ(corrected[1], 2000);
    EXPECT_EQ(corrected[2], 3000);
}

template <typename Sample>
void FollowsThePlainCounter(bool planar) {
    std::mt19937 random = SeededRandom();
    PhaseCheck check = ReadyCheck(8000, planar);
    PlainDetectors plain;
    plain.rate = 8000;
    plain.planar = planar;
    int corrected = 0;
    int restarts = 0;
    for (int call = 0; call < 420; ++call) {
        // Long runs of one polarity, then of the other, then a mix.
        const int opposedPercent = call < 260 ? 98 : call < 380 ? 2 : 60;
        std::vector<Sample> samples(2 * static_cast<std::size_t>(RandomInt(random, 0, 12000)));
        const std::size_t frames = samples.size() / 2;
        for (std::size_t i = 0; i < frames; ++i) {
            int level = RandomInt(random, 0, 9) == 0 ? RandomInt(random, 0, 600)
                                                     : RandomInt(random, 300, 32767);
            const int sign = RandomInt(random, 0, 1) == 0 ? 1 : -1;
            int other = RandomInt(random, 0, 99) < opposedPercent ? -level : level;
            other = RandomInt(random, 0, 30) == 0 ? 0 : other;
            level = RandomInt(random, 0, 1000) == 0 ? 32767 + (sign > 0 ? 1 : 0) : level;
            const float scale = std::is_same_v<Sample, float> ? 1.0F / 32768.0F : 1.0F;
            samples[planar ? i : 2 * i] =
                static_cast<Sample>(static_cast<float>(-sign * level) * scale);
            samples[planar ? i + frames : 2 * i + 1] =
                static_cast<Sample>(static_cast<float>(sign * other) * scale);
        }
        std::vector<Sample> expected = samples;
        const std::vector<Sample> before = samples;
        const bool second = RandomInt(random, 0, 1) == 1;
        ASSERT_EQ(second ? Check2(check, samples) : Check(check, samples), RESULT_OK);
        const std::uint64_t totalBefore = plain.total;
        plain.Run(expected, second);
        ASSERT_TRUE(SameBits(samples, expected)) << "call " << call;
        ASSERT_NO_FATAL_FAILURE(ExpectSameDetectors(check, plain)) << "call " << call;
        corrected += SameBits(samples, before) ? 0 : 1;
        restarts += plain.total < totalBefore ? 1 : 0;
    }
    EXPECT_GT(corrected, 10);
    EXPECT_GT(restarts, 0);
}

TEST(PhaseCheck, StatisticsAndCorrectionsFollowThePlainCounterOn16BitInterleaved) {
    FollowsThePlainCounter<short>(false);
}
TEST(PhaseCheck, StatisticsAndCorrectionsFollowThePlainCounterOn16BitPlanar) {
    FollowsThePlainCounter<short>(true);
}
TEST(PhaseCheck, StatisticsAndCorrectionsFollowThePlainCounterOnFloatInterleaved) {
    FollowsThePlainCounter<float>(false);
}
TEST(PhaseCheck, StatisticsAndCorrectionsFollowThePlainCounterOnFloatPlanar) {
    FollowsThePlainCounter<float>(true);
}

TEST(PhaseCheck, TheFirstCallAfterTheRestartFollowsTheShareFromBeforeIt) {
    PhaseCheck check = ReadyCheck(8000);
    std::vector<short> opposed = Stereo<short>(5000, 10000, -10000);
    Check(check, opposed);
    check.mScore = 20 * 8000 - 1;
    check.mOpposedShare = 0.0F;
    std::vector<short> two = Stereo<short>(2, 10000, -10000);
    Check(check, two);
    ASSERT_EQ(check.mTotal, 0U) << "restarted";
    std::vector<short> first = Stereo<short>(1, 10000, -10000);
    Check(check, first);
    EXPECT_EQ(first[0], -10000) << "corrected by the share of 5002 opposed frames";
    std::vector<short> second = Stereo<short>(1, 10000, -10000);
    Check(check, second);
    EXPECT_EQ(second[0], 10000) << "one frame is less than half a second";
}

}  // namespace
