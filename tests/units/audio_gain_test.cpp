#include "units/audio_gain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "common/result_code.h"
#include "support/bytes.h"
#include "units/gain_curve.h"

using namespace audio_filter::internal;

namespace {

AudioGain ReadyGain(SampleFmt fmt) {
    AudioGain gain;
    EXPECT_EQ(gain.Init(fmt), RESULT_OK);
    return gain;
}

template <typename Sample>
std::vector<Sample> Processed(AudioGain& gain, std::vector<Sample> samples) {
    EXPECT_EQ(gain.Process(BytesOf(samples), ByteCount(samples)), RESULT_OK);
    return samples;
}

const std::vector<short> kSomeS16 = {0,     1,     -1,     100,   -100,  9830,
                                     -9830, 20000, -20000, 32767, -32768};
const std::vector<float> kSomeFloat = {0.0F, -0.0F, 0.1F, -0.1F, 0.3F, 0.9F,
                                       1.0F, -1.0F, 1.5F, -2.0F, NAN};

TEST(AudioGain, ANewUnitHasGain0_8AndIsNotInitialised) {
    AudioGain gain;
    EXPECT_FALSE(gain.IsInited());
    EXPECT_EQ(gain.mGain, 0.8F);
    EXPECT_EQ(gain.mFmt, -1);
}

TEST(AudioGain, InitTakes1And6As16BitAnd3And8AsFloat) {
    EXPECT_EQ(ReadyGain(SAMPLE_FMT_S16).mFmt, 1);
    EXPECT_EQ(ReadyGain(SAMPLE_FMT_S16P).mFmt, 1);
    EXPECT_EQ(ReadyGain(SAMPLE_FMT_FLT).mFmt, 3);
    EXPECT_EQ(ReadyGain(SAMPLE_FMT_FLTP).mFmt, 3);
}

TEST(AudioGain, InitRefusesEveryOtherFormatWith3AndKeepsTheEarlierFormatAndGain) {
    for (const int fmt : {-1, 0, 2, 4, 5, 7, 9, 10, -100, 1000}) {
        AudioGain gain = ReadyGain(SAMPLE_FMT_FLT);
        gain.SetGain(0.25F);
        EXPECT_EQ(gain.Init(static_cast<SampleFmt>(fmt)), RESULT_INVALID) << fmt;
        EXPECT_FALSE(gain.IsInited());
        EXPECT_EQ(gain.mFmt, 3);
        EXPECT_EQ(gain.mGain, 0.25F);
    }
}

TEST(AudioGain, InitResetsTheGainTo0_8) {
    AudioGain gain;
    gain.SetGain(0.1F);
    gain.Init(SAMPLE_FMT_S16);
    EXPECT_EQ(gain.mGain, 0.8F);
}

TEST(AudioGain, ClearLeavesGain0AndNoFormat) {
    AudioGain gain = ReadyGain(SAMPLE_FMT_S16);
    EXPECT_TRUE(gain.Clear());
    EXPECT_FALSE(gain.IsInited());
    EXPECT_EQ(gain.mGain, 0.0F);
    EXPECT_EQ(gain.mFmt, -1);
}

TEST(AudioGain, SetGainClampsTo0To1AndStoresNaNAs0) {
    AudioGain gain;
    const auto stored = [&gain](float g) {
        EXPECT_TRUE(gain.SetGain(g));
        return gain.mGain;
    };
    EXPECT_EQ(stored(0.5F), 0.5F);
    EXPECT_EQ(stored(1.0F), 1.0F);
    EXPECT_EQ(stored(1.5F), 1.0F);
    EXPECT_EQ(stored(INFINITY), 1.0F);
    EXPECT_EQ(stored(-5.0F), 0.0F);
    EXPECT_EQ(stored(-INFINITY), 0.0F);
    gain.SetGain(0.5F);
    EXPECT_EQ(stored(NAN), 0.0F);
    EXPECT_EQ(stored(1e-30F), 1e-30F);
    EXPECT_TRUE(std::signbit(stored(-0.0F))) << "not below 0";
}

TEST(AudioGain, GainZeroAfterSetGainMinus5LeavesTheBufferBitIdentical) {
    AudioGain s16 = ReadyGain(SAMPLE_FMT_S16);
    s16.SetGain(-5.0F);
    EXPECT_EQ(Processed(s16, kSomeS16), kSomeS16);
    AudioGain flt = ReadyGain(SAMPLE_FMT_FLT);
    flt.SetGain(-5.0F);
    EXPECT_TRUE(SameBits(Processed(flt, kSomeFloat), kSomeFloat));
}

TEST(AudioGain, AClearedUnitLeavesTheBufferBitIdenticalThroughTheThreeArgumentProcess) {
    AudioGain gain = ReadyGain(SAMPLE_FMT_S16);
    gain.Clear();
    std::vector<short> samples = kSomeS16;
    EXPECT_EQ(gain.Process(BytesOf(samples), ByteCount(samples), SAMPLE_FMT_S16), RESULT_OK);
    EXPECT_EQ(samples, kSomeS16);
    std::vector<float> floats = kSomeFloat;
    EXPECT_EQ(gain.Process(BytesOf(floats), ByteCount(floats), SAMPLE_FMT_FLT), RESULT_OK);
    EXPECT_TRUE(SameBits(floats, kSomeFloat));
}

TEST(AudioGain, GainOneMapsKnee8192To24568) {
    AudioGain gain = ReadyGain(SAMPLE_FMT_S16);
    gain.SetGain(1.0F);
    EXPECT_EQ(Processed(gain, std::vector<short>{8192, -8192}),
              (std::vector<short>{24568, -24568}));
}

TEST(AudioGain, TheDefaultGainMapsFullScale32767To32744AndMinus32768NoLowerThanItself) {
    AudioGain gain = ReadyGain(SAMPLE_FMT_S16);
    const std::vector<short> mapped = Processed(gain, std::vector<short>{32767, -32768});
    EXPECT_EQ(mapped[0], 32744);
    // (-32768 + 9830) * 438 - 9830 * 2389 = -33530714, shifted right by 10.
    EXPECT_EQ(mapped[1], -32745);
}

TEST(AudioGain, FloatInputBeyondFullScaleIsClampedToExactly1) {
    AudioGain gain = ReadyGain(SAMPLE_FMT_FLT);
    EXPECT_EQ(Processed(gain, std::vector<float>{1.5F, -1.5F, 1e30F}),
              (std::vector<float>{1, -1, 1}));
}

TEST(AudioGain, ThreeBytesOf16BitAreOneSampleAndTheLastByteIsUnchanged) {
    AudioGain gain = ReadyGain(SAMPLE_FMT_S16);
    std::vector<short> samples = {1000, 1000};
    EXPECT_EQ(gain.Process(BytesOf(samples), 3), RESULT_OK);
    EXPECT_EQ(samples, (std::vector<short>{1000 * 2389 >> 10, 1000}));
    std::vector<float> floats = {0.1F, 0.1F};
    AudioGain flt = ReadyGain(SAMPLE_FMT_FLT);
    EXPECT_EQ(flt.Process(BytesOf(floats), 7), RESULT_OK);
    EXPECT_NE(floats[0], 0.1F);
    EXPECT_EQ(floats[1], 0.1F);
}

TEST(AudioGain, ASizeBelowOneSampleChangesNothingAndReturns0) {
    AudioGain gain = ReadyGain(SAMPLE_FMT_S16);
    char byte = 77;
    EXPECT_EQ(gain.Process(&byte, 1), RESULT_OK);
    EXPECT_EQ(byte, 77);
}

TEST(AudioGain, ThreeArgumentProcessOfAPlanarFormatReturns11AndLeavesTheBuffer) {
    AudioGain gain = ReadyGain(SAMPLE_FMT_S16P);
    for (const int fmt : {6, 8, -1, 0, 2, 4, 5, 7, 9, 100}) {
        std::vector<short> samples = kSomeS16;
        EXPECT_EQ(gain.Process(BytesOf(samples), ByteCount(samples), static_cast<SampleFmt>(fmt)),
                  RESULT_UNSUPPORTED_FORMAT)
            << fmt;
        EXPECT_EQ(samples, kSomeS16);
    }
}

TEST(AudioGain, ThreeArgumentProcessNeedsNoInitAndUsesItsOwnFormat) {
    AudioGain fresh;  // gain 0.8
    std::vector<short> samples = {1000};
    EXPECT_EQ(fresh.Process(BytesOf(samples), 2, SAMPLE_FMT_S16), RESULT_OK);
    EXPECT_EQ(samples[0], 1000 * 2389 >> 10);
    AudioGain flt = ReadyGain(SAMPLE_FMT_FLT);
    samples = {1000};
    EXPECT_EQ(flt.Process(BytesOf(samples), 2, SAMPLE_FMT_S16), RESULT_OK);
    EXPECT_EQ(samples[0], 1000 * 2389 >> 10);
}

TEST(AudioGain, ThreeArgumentProcessOfNoBytesChangesNothing) {
    AudioGain gain;
    short sample = 1000;
    const char* bytes = reinterpret_cast<const char*>(&sample);
    for (const int size : {0, 1, -1, -2, -1000, INT32_MIN}) {
        EXPECT_EQ(gain.Process(bytes, size, SAMPLE_FMT_S16), RESULT_OK) << size;
        EXPECT_EQ(gain.Process(bytes, size, SAMPLE_FMT_FLT), RESULT_OK) << size;
    }
    EXPECT_EQ(gain.Process(nullptr, 8, SAMPLE_FMT_FLT), RESULT_OK);
    EXPECT_EQ(sample, 1000);
}

TEST(AudioGain, ABadArgumentReturns2BeforeNotInitialisedReturns4) {
    AudioGain gain;
    short sample = 5;
    const char* bytes = reinterpret_cast<const char*>(&sample);
    EXPECT_EQ(gain.Process(nullptr, 2), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(gain.Process(bytes, 0), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(gain.Process(bytes, -2), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(gain.Process(bytes, 2), RESULT_NOT_INITIALISED);
    gain.Init(SAMPLE_FMT_S16);
    EXPECT_EQ(gain.Process(nullptr, 2), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(gain.Process(bytes, 0), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(gain.Process(bytes, 2), RESULT_OK);
}

TEST(AudioGain, AnInitialisedUnitWithoutAFormatLeavesTheBufferAndReturns0) {
    AudioGain gain = ReadyGain(SAMPLE_FMT_S16);
    gain.mFmt = -1;
    EXPECT_EQ(Processed(gain, kSomeS16), kSomeS16);
}

TEST(AudioGain, ABlockAtAnOddAddressIsMappedLikeAnyOther) {
    AudioGain gain = ReadyGain(SAMPLE_FMT_S16);
    const std::vector<short> expected = Processed(gain, kSomeS16);
    std::vector<char> bytes(1 + kSomeS16.size() * sizeof(short));
    std::memcpy(bytes.data() + 1, kSomeS16.data(), bytes.size() - 1);
    EXPECT_EQ(gain.Process(bytes.data() + 1, static_cast<int>(bytes.size()) - 1), RESULT_OK);
    EXPECT_EQ(std::memcmp(bytes.data() + 1, expected.data(), bytes.size() - 1), 0);
}

TEST(AudioGain, TheAlternativeCurveIsAvailableThroughPrivateOperations) {
    AudioGain gain;
    gain.SetGain(0.75F);
    float sample = 0.375F;
    EXPECT_EQ(gain.ProcessCore(&sample, 4), RESULT_OK);
    EXPECT_EQ(sample, 0.625F);
    short value = 100;
    EXPECT_EQ(gain.ProcessCore(&value, 2), RESULT_OK);
    EXPECT_EQ(value, 200);
    gain.SetGain(0.0F);
    EXPECT_EQ(gain.ProcessCore(&sample, 4), RESULT_OK);
    EXPECT_EQ(gain.ProcessCore(&value, 2), RESULT_OK);
    EXPECT_EQ(sample, 0.625F);
    EXPECT_EQ(value, 200);
}

TEST(AudioGain, TheSmallestGainStillClampsFloatSamples) {
    AudioGain gain = ReadyGain(SAMPLE_FMT_FLT);
    gain.SetGain(1e-30F);
    EXPECT_EQ(Processed(gain, std::vector<float>{1.5F, -2.0F, 0.25F}),
              (std::vector<float>{1.0F, -1.0F, 0.25F}));
}

}  // namespace
