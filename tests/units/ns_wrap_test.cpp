#include "units/ns_wrap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "common/result_code.h"
#include "support/bare_float_suppressor.h"
#include "support/bare_suppressor.h"
#include "support/bytes.h"
#include "support/seed.h"
#include "support/signals.h"
#include "units/speech.h"

namespace {

template <typename Sample>
std::vector<Sample> ProcessBlocks(NSWrap& wrap, const std::vector<Sample>& in) {
    std::vector<Sample> out(in.size());
    for (std::size_t at = 0; at + 320 <= in.size(); at += 320) {
        EXPECT_EQ(
            wrap.Process(BytesOf(in) + at * sizeof(Sample), BytesOf(out) + at * sizeof(Sample)),
            RESULT_OK);
    }
    return out;
}

TEST(NSWrap, InitTakes8000_16000_32000HzFormats1And3AndLevels0To3) {
    for (const int rate : {8000, 16000, 32000}) {
        for (const SampleFmt fmt : {SAMPLE_FMT_S16, SAMPLE_FMT_FLT}) {
            for (int level = 0; level < 4; ++level) {
                NSWrap wrap;
                EXPECT_TRUE(wrap.Init(rate, fmt, level));
                EXPECT_NE(wrap.mLowIn, nullptr);
            }
        }
    }
}

TEST(NSWrap, InitStoresNothingWhenItRejectsItsArguments) {
    NSWrap wrap;
    ASSERT_TRUE(wrap.Init(32000, SAMPLE_FMT_FLT, 2));
    EXPECT_FALSE(wrap.Init(-1, SAMPLE_FMT_S16, 1));
    EXPECT_FALSE(wrap.Init(16000, SAMPLE_FMT_NONE, 1));
    EXPECT_FALSE(wrap.Init(16000, SAMPLE_FMT_S16, 4));
    EXPECT_FALSE(wrap.Init(16000, SAMPLE_FMT_S16, -1)) << "rejected by the unsigned comparison";
    EXPECT_EQ(wrap.mSampleRate, 32000);
    EXPECT_EQ(wrap.mFmt, SAMPLE_FMT_FLT);
    EXPECT_EQ(wrap.mLevel, 2);
    NSWrap fresh;
    EXPECT_FALSE(fresh.Init(32000, SAMPLE_FMT_S16, -1));
    EXPECT_EQ(fresh.mNs, nullptr);
    EXPECT_EQ(fresh.mFmt, -1);
}

TEST(NSWrap, ARateOutsideTheThreeStoresTheArgumentsAndHasAnInstanceButNoBuffers) {
    for (const int rate : {0, 1, 22050, 44100, 48000}) {
        NSWrap wrap;
        EXPECT_FALSE(wrap.Init(rate, SAMPLE_FMT_S16, 1)) << rate;
        EXPECT_EQ(wrap.mSampleRate, rate);
        EXPECT_NE(wrap.mNs, nullptr);
        EXPECT_EQ(wrap.mLowIn, nullptr);
        short block[320] = {};
        EXPECT_EQ(wrap.Process(reinterpret_cast<char*>(block), reinterpret_cast<char*>(block)),
                  RESULT_FAILURE);
    }
}

TEST(NSWrap, PlanarAndOtherFormatsHaveAnInstanceButNoBuffersAndFailEveryProcess) {
    for (const int fmt : {6, 8, 0, 2, 4, 5, 7, 9, -2, 100}) {
        NSWrap wrap;
        EXPECT_FALSE(wrap.Init(32000, static_cast<SampleFmt>(fmt), 1)) << fmt;
        EXPECT_NE(wrap.mNs, nullptr);
        EXPECT_EQ(wrap.mLowIn, nullptr);
        EXPECT_TRUE(wrap.setLevel(2));
        EXPECT_FALSE(wrap.Reset());
        std::vector<float> out(320, 7.0F);
        EXPECT_EQ(wrap.Process(BytesOf(out), BytesOf(out)), RESULT_FAILURE);
        EXPECT_EQ(out, std::vector<float>(320, 7.0F));
    }
}

TEST(NSWrap, BeforeInitAndAfterClearProcessReturnsMinus1AndSetLevelFalse) {
    NSWrap wrap;
    std::vector<short> block(320, 7);
    EXPECT_EQ(wrap.Process(BytesOf(block), BytesOf(block)), RESULT_FAILURE);
    EXPECT_FALSE(wrap.setLevel(1));
    EXPECT_FALSE(wrap.Reset());
    ASSERT_TRUE(wrap.Init(32000, SAMPLE_FMT_S16, 3));
    EXPECT_FALSE(wrap.mInited) << "no Init sets it";
    EXPECT_TRUE(wrap.Clear());
    EXPECT_FALSE(wrap.mInited);
    EXPECT_EQ(wrap.Process(BytesOf(block), BytesOf(block)), RESULT_FAILURE);
    EXPECT_FALSE(wrap.setLevel(1));
    EXPECT_TRUE(wrap.Reset()) << "the stored format is still processed";
    EXPECT_EQ(block, std::vector<short>(320, 7));
    EXPECT_TRUE(wrap.Clear());
}

TEST(NSWrap, NullBuffersReturnMinus1) {
    NSWrap wrap;
    wrap.Init(32000, SAMPLE_FMT_S16, 3);
    std::vector<short> block(320, 7);
    EXPECT_EQ(wrap.Process(nullptr, BytesOf(block)), RESULT_FAILURE);
    EXPECT_EQ(wrap.Process(BytesOf(block), nullptr), RESULT_FAILURE);
    EXPECT_EQ(block, std::vector<short>(320, 7));
}

TEST(NSWrap, SetLevelTakes0To3AndLeavesTheStoredLevel) {
    NSWrap wrap;
    wrap.Init(32000, SAMPLE_FMT_S16, 3);
    for (int level = -2; level < 7; ++level) {
        EXPECT_EQ(wrap.setLevel(level), level >= 0 && level <= 3) << level;
    }
    EXPECT_EQ(wrap.mLevel, 3) << "as given to Init";
    const std::vector<short> in = Speech<short>(60 * 320);
    BareSuppressor bare(32000, 3);
    wrap.Init(32000, SAMPLE_FMT_S16, 3);
    for (std::size_t block = 0; block < 60; ++block) {
        const int level = static_cast<int>(block / 15);
        wrap.setLevel(level);
        bare.SetLevel(level);
        short out[320];
        short expected[320];
        wrap.Process(BytesOf(in) + block * 640, reinterpret_cast<char*>(out));
        bare.Process(in.data() + block * 320, expected);
        ASSERT_EQ(std::memcmp(out, expected, sizeof(out)), 0) << block;
    }
}

TEST(NSWrap, SixteenBitBlocksEqualTheBareSuppressorAtEveryRateAndLevel) {
    const std::vector<short> in = Speech<short>(60 * 320);
    for (const int rate : {8000, 16000, 32000}) {
        for (int level = 0; level < 4; ++level) {
            NSWrap wrap;
            wrap.Init(rate, SAMPLE_FMT_S16, level);
            BareSuppressor bare(rate, level);
            std::vector<short> expected(in.size());
            for (std::size_t at = 0; at < in.size(); at += 320) {
                bare.Process(in.data() + at, expected.data() + at);
            }
            EXPECT_EQ(ProcessBlocks(wrap, in), expected) << rate << " Hz, level " << level;
        }
    }
}

TEST(NSWrap, AFloatBlockOfZerosStaysZeroWithAllMemoriesAtZero) {
    NSWrap wrap;
    wrap.Init(32000, SAMPLE_FMT_FLT, 3);
    const std::vector<float> zeros(320 * 5);
    EXPECT_EQ(ProcessBlocks(wrap, zeros), zeros);
    const std::vector<char> silence(48);
    for (const auto* memory : {&wrap.mAnalysisState1, &wrap.mAnalysisState2, &wrap.mSynthesisState1,
                               &wrap.mSynthesisState2}) {
        EXPECT_EQ(std::memcmp(memory->get(), silence.data(), 48), 0);
    }
}

TEST(NSWrap, FullScaleFloatSpeechStaysInRangeWithAHighBandOfExactly0) {
    std::vector<float> speech = Speech<float>(100 * 320);
    float peak = 0.0F;
    for (const float sample : speech) {
        peak = std::max(peak, std::abs(sample));
    }
    for (float& sample : speech) {
        sample /= peak;
    }
    NSWrap wrap;
    wrap.Init(32000, SAMPLE_FMT_FLT, 0);
    for (std::size_t at = 0; at < speech.size(); at += 320) {
        float out[320];
        ASSERT_EQ(wrap.Process(BytesOf(speech) + at * 4, reinterpret_cast<char*>(out)), RESULT_OK);
        const auto* low = reinterpret_cast<const float*>(wrap.mLowOut.get());
        const auto* high = reinterpret_cast<const float*>(wrap.mHighOut.get());
        for (int i = 0; i < 160; ++i) {
            ASSERT_LE(std::abs(low[i]), 1.0F);
            ASSERT_EQ(high[i], 0.0F);
        }
    }
}

template <typename Sample>
void ASecondInitKeepsTheFilterMemoriesAndRestartsTheSuppressor() {
    const std::vector<Sample> in = Speech<Sample>(20 * 320);
    NSWrap wrap;
    wrap.Init(32000, kFormat<Sample>, 3);
    ProcessBlocks(wrap, in);
    const std::size_t bytes = std::is_same_v<Sample, short> ? 24 : 48;
    std::vector<char> memory(wrap.mAnalysisState1.get(), wrap.mAnalysisState1.get() + bytes);
    const char* buffer = wrap.mLowIn.get();
    ASSERT_NE(memory, std::vector<char>(bytes));
    ASSERT_TRUE(wrap.Init(32000, kFormat<Sample>, 3));
    EXPECT_EQ(wrap.mLowIn.get(), buffer);
    EXPECT_EQ(std::memcmp(wrap.mAnalysisState1.get(), memory.data(), bytes), 0);

    // With zero filter memories, a restarted suppressor equals a new one.
    EXPECT_TRUE(wrap.Reset());
    NSWrap fresh;
    fresh.Init(32000, kFormat<Sample>, 3);
    EXPECT_TRUE(SameBits(ProcessBlocks(wrap, in), ProcessBlocks(fresh, in)));
}

TEST(NSWrap, ASecondInitRestartsTheSuppressorAndKeepsTheFilterMemories) {
    ASecondInitKeepsTheFilterMemoriesAndRestartsTheSuppressor<short>();
    ASecondInitKeepsTheFilterMemoriesAndRestartsTheSuppressor<float>();
}

template <typename Sample>
void ResetSilencesTheFiltersOnly() {
    const std::vector<Sample> in = Speech<Sample>(20 * 320);
    NSWrap wrap;
    wrap.Init(32000, kFormat<Sample>, 3);
    const std::vector<Sample> first = ProcessBlocks(wrap, in);
    EXPECT_TRUE(wrap.Reset());
    const std::size_t bytes = std::is_same_v<Sample, short> ? 24 : 48;
    for (const auto* memory : {&wrap.mAnalysisState1, &wrap.mAnalysisState2, &wrap.mSynthesisState1,
                               &wrap.mSynthesisState2}) {
        EXPECT_EQ(std::vector<char>(memory->get(), memory->get() + bytes),
                  std::vector<char>(bytes));
    }
    EXPECT_FALSE(SameBits(ProcessBlocks(wrap, in), first)) << "the noise estimate is kept";
}

TEST(NSWrap, ResetZeroesTheFiltersAndKeepsTheSuppressorState) {
    ResetSilencesTheFiltersOnly<short>();
    ResetSilencesTheFiltersOnly<float>();
}

TEST(NSWrap, AChangeOfFormatStartsWithBuffersOfZeros) {
    NSWrap wrap;
    wrap.Init(32000, SAMPLE_FMT_S16, 3);
    ProcessBlocks(wrap, Speech<short>(10 * 320));
    ASSERT_TRUE(wrap.Init(32000, SAMPLE_FMT_FLT, 3));
    const std::vector<float> in = Speech<float>(10 * 320);
    NSWrap fresh;
    fresh.Init(32000, SAMPLE_FMT_FLT, 3);
    EXPECT_TRUE(SameBits(ProcessBlocks(wrap, in), ProcessBlocks(fresh, in)));
    ASSERT_TRUE(wrap.Init(32000, SAMPLE_FMT_S16, 3));
    const std::vector<short> s16 = Speech<short>(10 * 320);
    NSWrap fresh16;
    fresh16.Init(32000, SAMPLE_FMT_S16, 3);
    EXPECT_EQ(ProcessBlocks(wrap, s16), ProcessBlocks(fresh16, s16));
}

TEST(NSWrap, AFailedInitWithAnotherFormatProcessesNothing) {
    NSWrap wrap;
    wrap.Init(32000, SAMPLE_FMT_S16, 3);
    EXPECT_FALSE(wrap.Init(44100, SAMPLE_FMT_FLT, 3));
    std::vector<float> block(320, 0.5F);
    EXPECT_EQ(wrap.Process(BytesOf(block), BytesOf(block)), RESULT_FAILURE);
    EXPECT_TRUE(wrap.Reset());
    EXPECT_TRUE(wrap.setLevel(0));
}

TEST(NSWrap, FilterMemoriesSurviveAnInitWithAnUnprocessedFormat) {
    const std::vector<short> in = Speech<short>(10 * 320);
    NSWrap wrap;
    wrap.Init(32000, SAMPLE_FMT_S16, 3);
    ProcessBlocks(wrap, in);
    const std::vector<char> memory(wrap.mSynthesisState2.get(), wrap.mSynthesisState2.get() + 24);
    EXPECT_FALSE(wrap.Init(32000, SAMPLE_FMT_S16P, 3));
    EXPECT_TRUE(wrap.Init(32000, SAMPLE_FMT_S16, 3));
    EXPECT_EQ(std::memcmp(wrap.mSynthesisState2.get(), memory.data(), 24), 0);
}

TEST(NSWrap, ABlockInPlaceAtAnOddAddressIsProcessedLikeAnyOther) {
    const std::vector<short> in = Speech<short>(5 * 320);
    NSWrap wrap;
    wrap.Init(32000, SAMPLE_FMT_S16, 3);
    NSWrap twin;
    twin.Init(32000, SAMPLE_FMT_S16, 3);
    const std::vector<short> expected = ProcessBlocks(twin, in);
    for (std::size_t at = 0; at < in.size(); at += 320) {
        char bytes[641];
        std::memcpy(bytes + 1, in.data() + at, 640);
        ASSERT_EQ(wrap.Process(bytes + 1, bytes + 1), RESULT_OK);
        ASSERT_EQ(std::memcmp(bytes + 1, expected.data() + at, 640), 0);
    }
}

TEST(NSWrap, SamplesThatAreNotFiniteCountAsZeros) {
    NSWrap wrap;
    wrap.Init(32000, SAMPLE_FMT_FLT, 3);
    std::vector<float> in = Speech<float>(40 * 320);
    std::vector<float> zeroed = in;
    for (const std::size_t at : {std::size_t{100}, std::size_t{101}, std::size_t{3333}}) {
        in[at] = at % 2 == 0 ? NAN : -INFINITY;
        zeroed[at] = 0.0F;
    }
    NSWrap twin;
    twin.Init(32000, SAMPLE_FMT_FLT, 3);
    EXPECT_TRUE(SameBits(ProcessBlocks(wrap, in), ProcessBlocks(twin, zeroed)));
}

TEST(NSWrap, ABlockOfTheLargestFiniteSamplesLeavesNoTraceAfterASecond) {
    NSWrap wrap;
    wrap.Init(32000, SAMPLE_FMT_FLT, 3);
    std::vector<float> in = Speech<float>(150 * 320);
    for (std::size_t i = 320; i < 640; ++i) {
        in[i] = i % 3 == 0 ? -3.4e38F : 3.4e38F;
    }
    const std::vector<float> out = ProcessBlocks(wrap, in);
    for (const float sample : out) {
        ASSERT_TRUE(std::isfinite(sample));
    }
    for (std::size_t i = 320 * 102; i < out.size(); ++i) {
        ASSERT_LE(std::abs(out[i]), 1.0F) << i;
    }
}

/// Speech interrupted by silence and by values whose squares underflow: some blocks take the early
/// exit, most do not.
std::vector<float> SpeechAndSilence() {
    std::mt19937 random = SeededRandom();
    std::vector<float> signal = NoisySpeech(random, 320 * 400, 32000.0);
    for (std::size_t i = 0; i < signal.size(); ++i) {
        const std::size_t block = i / 320;
        if (block % 40 >= 15) {
            signal[i] = 0.0F;
        }
        if (block % 40 >= 25 && block % 40 < 35) {  // around the value whose square underflows
            signal[i] = std::ldexp(std::uniform_real_distribution<float>(-1.0F, 1.0F)(random), -89);
        }
    }
    return signal;
}

TEST(NSWrap, FloatBlocksEqualTheBareFloatSuppressorAtEveryRateThroughSpeechAndSilence) {
    const std::vector<float> in = SpeechAndSilence();
    for (const int rate : {8000, 16000, 32000}) {
        NSWrap wrap;
        wrap.Init(rate, SAMPLE_FMT_FLT, 2);
        BareFloatSuppressor bare(rate, 2);
        int early = 0;
        int earlyAfterOrdinary = 0;
        bool wasEarly = false;
        for (std::size_t at = 0; at < in.size(); at += 320) {
            std::vector<float> out(320);
            std::vector<float> expected(320);
            ASSERT_EQ(wrap.Process(BytesOf(in) + at * 4, BytesOf(out)), RESULT_OK);
            bare.Process(in.data() + at, expected.data());
            ASSERT_TRUE(SameBits(out, expected)) << rate << " Hz, block " << at / 320;
            early += bare.leftEarly ? 1 : 0;
            earlyAfterOrdinary += bare.leftEarly && !wasEarly ? 1 : 0;
            wasEarly = bare.leftEarly;
        }
        EXPECT_GT(early, 10) << rate;
        EXPECT_GT(earlyAfterOrdinary, 3) << rate;
        EXPECT_LT(early, 300) << rate;
    }
}

TEST(NSWrap, ARefusedRateAfterAGoodInitIsStoredAndTheStreamContinues) {
    const std::vector<short> in = Speech<short>(20 * 320);
    NSWrap wrap;
    NSWrap twin;
    wrap.Init(32000, SAMPLE_FMT_S16, 3);
    twin.Init(32000, SAMPLE_FMT_S16, 3);
    EXPECT_EQ(ProcessBlocks(wrap, in), ProcessBlocks(twin, in));
    EXPECT_FALSE(wrap.Init(44100, SAMPLE_FMT_S16, 0));
    EXPECT_EQ(wrap.mSampleRate, 44100);
    EXPECT_EQ(wrap.mLevel, 0);
    EXPECT_EQ(ProcessBlocks(wrap, in), ProcessBlocks(twin, in));
}

}  // namespace
