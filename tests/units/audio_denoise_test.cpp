#include "units/audio_denoise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "common/result_code.h"
#include "support/bare_suppressor.h"
#include "support/bytes.h"
#include "support/seed.h"
#include "support/signals.h"
#include "units/speech.h"

namespace {

constexpr int kBlock = 320;

/// The output of a block, in a buffer with 10 ms more.
template <typename Sample>
std::vector<Sample> Process(AudioDenoise& denoise, const std::vector<Sample>& block) {
    std::vector<Sample> out(block.size() + 2000, static_cast<Sample>(77));
    int size = ByteCount(block);
    EXPECT_EQ(denoise.Process(BytesOf(block), BytesOf(out), size), RESULT_OK);
    EXPECT_EQ(size % static_cast<int>(sizeof(Sample)), 0);
    out.resize(static_cast<std::size_t>(size) / sizeof(Sample));
    return out;
}

template <typename Sample>
std::vector<Sample> Interleaved(const std::vector<Sample>& left, const std::vector<Sample>& right) {
    std::vector<Sample> both;
    for (std::size_t i = 0; i < left.size(); ++i) {
        both.push_back(left[i]);
        both.push_back(right[i]);
    }
    return both;
}

TEST(AudioDenoise, Mono16BitAt32000HzEqualsTheBareSuppressorByteForByte) {
    for (int level = 0; level < 4; ++level) {
        AudioDenoise denoise;
        ASSERT_EQ(denoise.Init(32000, 1, SAMPLE_FMT_S16, level), RESULT_OK);
        BareSuppressor bare(32000, level);
        const std::vector<short> in = Speech<short>(kBlock * 200);
        std::vector<short> expected(in.size());
        for (std::size_t at = 0; at < in.size(); at += kBlock) {
            bare.Process(in.data() + at, expected.data() + at);
        }
        EXPECT_EQ(Process(denoise, in), expected) << level;
    }
}

TEST(AudioDenoise, SevenCallsOf100BytesReturn640BytesAtTheSeventh) {
    AudioDenoise denoise;
    ASSERT_EQ(denoise.Init(32000, 1, SAMPLE_FMT_S16, 3), RESULT_OK);
    const std::vector<short> block(50, 1000);
    std::vector<short> out(400);
    for (int call = 1; call <= 7; ++call) {
        int size = 100;
        ASSERT_EQ(denoise.Process(BytesOf(block), BytesOf(out), size), RESULT_OK);
        EXPECT_EQ(size, call < 7 ? 0 : 640) << "call " << call;
    }
    EXPECT_EQ(denoise.mBuffered, 30);
}

TEST(AudioDenoise, StereoOfAnOddNumberOfBytesIs3) {
    AudioDenoise denoise;
    denoise.Init(32000, 2, SAMPLE_FMT_S16, 3);
    const std::vector<short> in(100);
    std::vector<short> out(1000, 77);
    int size = 101;
    EXPECT_EQ(denoise.Process(BytesOf(in), BytesOf(out), size), RESULT_INVALID);
    EXPECT_EQ(size, 101);
    EXPECT_EQ(out, std::vector<short>(1000, 77));
}

TEST(AudioDenoise, ThreeChannelsAreCopiedExactlyAndReturn12) {
    AudioDenoise denoise;
    denoise.Init(32000, 3, SAMPLE_FMT_FLT, 3);
    std::vector<float> in = {0.5F, NAN, -INFINITY, 1e38F, -0.0F};
    std::vector<float> out(5);
    int size = 19;  // not a multiple of the sample size
    EXPECT_EQ(denoise.Process(BytesOf(in), BytesOf(out), size), RESULT_PASSED_THROUGH);
    EXPECT_EQ(size, 19);
    EXPECT_EQ(std::memcmp(in.data(), out.data(), 19), 0);
    EXPECT_NE(denoise.mNsL, nullptr);
    EXPECT_EQ(denoise.mInR, nullptr) << "only for stereo";
    denoise.Clear();
    EXPECT_EQ(denoise.Process(BytesOf(in), BytesOf(out), size), RESULT_PASSED_THROUGH)
        << "even when not initialised";
}

TEST(AudioDenoise, Config7OnStereoSetsLevel3OnBothChannelsAndIsTrue) {
    const std::vector<short> left = Speech<short>(kBlock * 100);
    const std::vector<short> right(left.rbegin(), left.rend());
    const std::vector<short> both = Interleaved(left, right);
    AudioDenoise configured;
    configured.Init(32000, 2, SAMPLE_FMT_S16, 0);
    EXPECT_TRUE(configured.Config(7));
    AudioDenoise third;
    third.Init(32000, 2, SAMPLE_FMT_S16, 3);
    EXPECT_EQ(Process(configured, both), Process(third, both));
}

TEST(AudioDenoise, Config7OnMonoSetsLevel3AndMinus9Level0AndBothAreFalse) {
    const std::vector<short> in = Speech<short>(kBlock * 100);
    AudioDenoise configured;
    configured.Init(32000, 1, SAMPLE_FMT_S16, 0);
    EXPECT_FALSE(configured.Config(7));
    AudioDenoise third;
    third.Init(32000, 1, SAMPLE_FMT_S16, 3);
    const std::vector<short> expected = Process(third, in);
    EXPECT_EQ(Process(configured, in), expected);
    AudioDenoise lowered;
    lowered.Init(32000, 1, SAMPLE_FMT_S16, 3);
    EXPECT_FALSE(lowered.Config(-9));
    AudioDenoise mild;
    mild.Init(32000, 1, SAMPLE_FMT_S16, 0);
    const std::vector<short> atLevel0 = Process(mild, in);
    EXPECT_EQ(Process(lowered, in), atLevel0);
    EXPECT_NE(atLevel0, expected);
}

TEST(AudioDenoise, ConfigBeforeInitAndAfterClearIsFalse) {
    AudioDenoise denoise;
    EXPECT_FALSE(denoise.Config(1));
    denoise.Init(32000, 2, SAMPLE_FMT_S16, 3);
    EXPECT_TRUE(denoise.Config(1));
    denoise.Clear();
    EXPECT_FALSE(denoise.Config(1));
}

TEST(AudioDenoise, AMonoUnitThatWasStereoBeforeRejectsConfigLikeAnyMonoUnit) {
    AudioDenoise denoise;
    denoise.Init(32000, 2, SAMPLE_FMT_S16, 3);
    denoise.Init(32000, 1, SAMPLE_FMT_S16, 3);
    EXPECT_FALSE(denoise.Config(1));
    EXPECT_EQ(denoise.mNsR, nullptr);
}

TEST(AudioDenoise, Format6IsAcceptedAndItsOutputIsTheUntouchedOutputBuffer) {
    for (const SampleFmt fmt : {SAMPLE_FMT_S16P, SAMPLE_FMT_FLTP}) {
        for (const int channels : {1, 2}) {
            AudioDenoise denoise;
            ASSERT_EQ(denoise.Init(32000, channels, fmt, 3), RESULT_OK);
            EXPECT_TRUE(denoise.IsInited());
            const int bytes = (fmt == SAMPLE_FMT_S16P ? 2 : 4) * channels;
            std::memset(denoise.mOutL.get(), 5, 320U * static_cast<std::size_t>(bytes / channels));
            std::vector<char> in(static_cast<std::size_t>(700 * bytes), 99);
            std::vector<char> out(in.size() + 4000, 7);
            int size = static_cast<int>(in.size());
            EXPECT_EQ(denoise.Process(in.data(), out.data(), size), RESULT_OK);
            ASSERT_EQ(size, 640 * bytes);
            const int width = bytes / channels;
            for (int i = 0; i < size; ++i) {
                const bool left = channels == 1 || (i / width) % 2 == 0;
                ASSERT_EQ(out[static_cast<std::size_t>(i)], left ? 5 : 0) << i;
            }
        }
    }
}

TEST(AudioDenoise, InitRefusesRatesAndChannelsBelow1AndOtherFormatsWith3) {
    AudioDenoise denoise;
    EXPECT_EQ(denoise.Init(0, 1, SAMPLE_FMT_S16, 3), RESULT_INVALID);
    EXPECT_EQ(denoise.Init(-32000, 1, SAMPLE_FMT_S16, 3), RESULT_INVALID);
    EXPECT_EQ(denoise.Init(32000, 0, SAMPLE_FMT_S16, 3), RESULT_INVALID);
    EXPECT_EQ(denoise.Init(32000, -1, SAMPLE_FMT_S16, 3), RESULT_INVALID);
    for (const int fmt : {-1, 0, 2, 4, 5, 7, 9, 10, -50}) {
        EXPECT_EQ(denoise.Init(32000, 1, static_cast<SampleFmt>(fmt), 3), RESULT_INVALID) << fmt;
        EXPECT_FALSE(denoise.IsInited());
    }
}

TEST(AudioDenoise, AChannelWithoutASuppressorReturns4) {
    std::vector<char> bytes(8);
    for (const int channels : {1, 2}) {
        AudioDenoise denoise;
        denoise.Init(32000, channels, SAMPLE_FMT_S16, 3);
        (channels == 1 ? denoise.mNsL : denoise.mNsR).reset();
        int size = 8;
        EXPECT_EQ(denoise.Process(bytes.data(), bytes.data(), size), RESULT_NOT_INITIALISED)
            << channels;
    }
}

TEST(AudioDenoise, ARefusedInitIsNotInitialisedButKeepsItsChannels) {
    AudioDenoise denoise;
    denoise.Init(32000, 1, SAMPLE_FMT_S16, 3);
    EXPECT_EQ(denoise.Init(0, 3, SAMPLE_FMT_S16, 3), RESULT_INVALID);
    EXPECT_FALSE(denoise.IsInited());
    std::vector<char> bytes(3);
    int size = 3;
    EXPECT_EQ(denoise.Process(bytes.data(), bytes.data(), size), RESULT_NOT_INITIALISED)
        << "12 with three channels";
}

TEST(AudioDenoise, TheOrderOfChecksIsNullSizeChannelsAlignmentInitialised) {
    AudioDenoise denoise;
    std::vector<char> in(100);
    std::vector<char> out(4000);
    const auto code = [&](const char* from, char* to, int size) {
        return denoise.Process(from, to, size);
    };
    EXPECT_EQ(code(nullptr, out.data(), 4), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(code(in.data(), nullptr, 4), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(code(in.data(), out.data(), 0), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(code(in.data(), out.data(), -4), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(code(in.data(), out.data(), 4), RESULT_NOT_INITIALISED) << "before Init";
    denoise.Init(32000, 2, SAMPLE_FMT_S16, 3);
    denoise.Clear();
    EXPECT_EQ(code(in.data(), out.data(), 3), RESULT_INVALID)
        << "alignment is checked before initialisation";
    EXPECT_EQ(code(in.data(), out.data(), 4), RESULT_NOT_INITIALISED);
    denoise.Init(32000, 5, SAMPLE_FMT_S16, 3);
    EXPECT_EQ(code(in.data(), out.data(), 3), RESULT_PASSED_THROUGH)
        << "the channel count is checked before alignment";
    EXPECT_EQ(code(nullptr, out.data(), 3), RESULT_BAD_ARGUMENT);
}

TEST(AudioDenoise, AlignmentIsCheckedAgainstTheChannelsOnlyAndALeftoverOfBytesIsIgnored) {
    AudioDenoise denoise;
    denoise.Init(32000, 2, SAMPLE_FMT_FLT, 3);
    const std::vector<char> in(100);
    std::vector<char> out(8000);
    int size = 14;  // one stereo frame of 8 bytes and 6 more bytes
    EXPECT_EQ(denoise.Process(in.data(), out.data(), size), RESULT_OK);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(denoise.mBuffered, 1);
    size = 6;  // no whole sample
    EXPECT_EQ(denoise.Process(in.data(), out.data(), size), RESULT_OK);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(denoise.mBuffered, 1);
}

TEST(AudioDenoise, ACallCanReturnUpTo319SamplesMoreThanItTakes) {
    AudioDenoise denoise;
    denoise.Init(32000, 1, SAMPLE_FMT_S16, 3);
    EXPECT_EQ(Process(denoise, std::vector<short>(319)).size(), 0U);
    EXPECT_EQ(Process(denoise, std::vector<short>(1)).size(), 320U);
}

template <typename Sample>
void ChunksDoNotMatter(int channels) {
    std::mt19937 random = SeededRandom();
    const std::vector<Sample> left = Speech<Sample>(32000);
    const std::vector<Sample> right(left.rbegin(), left.rend());
    const std::vector<Sample> in = channels == 2 ? Interleaved(left, right) : left;
    AudioDenoise whole;
    whole.Init(32000, channels, kFormat<Sample>, 3);
    const std::vector<Sample> expected = Process(whole, in);
    for (const int largest : {1, 7, 319, 320, 321, 5000}) {
        AudioDenoise chunked;
        chunked.Init(32000, channels, kFormat<Sample>, 3);
        std::vector<Sample> out;
        for (std::size_t at = 0; at < in.size();) {
            const auto wanted = static_cast<std::size_t>(channels * RandomInt(random, 1, largest));
            const std::size_t length = std::min(wanted, in.size() - at);
            const std::vector<Sample> part =
                Process(chunked,
                        std::vector<Sample>(in.begin() + static_cast<std::ptrdiff_t>(at),
                                            in.begin() + static_cast<std::ptrdiff_t>(at + length)));
            out.insert(out.end(), part.begin(), part.end());
            at += length;
        }
        ASSERT_TRUE(SameBits(out, expected)) << "blocks of up to " << largest;
    }
}

TEST(AudioDenoise, TheOutputDoesNotDependOnTheBlockSizesOfMono16Bit) {
    ChunksDoNotMatter<short>(1);
}
TEST(AudioDenoise, TheOutputDoesNotDependOnTheBlockSizesOfStereo16Bit) {
    ChunksDoNotMatter<short>(2);
}
TEST(AudioDenoise, TheOutputDoesNotDependOnTheBlockSizesOfMonoFloat) {
    ChunksDoNotMatter<float>(1);
}
TEST(AudioDenoise, TheOutputDoesNotDependOnTheBlockSizesOfStereoFloat) {
    ChunksDoNotMatter<float>(2);
}

template <typename Sample>
void StereoIsTwoMonos() {
    const std::vector<Sample> left = Speech<Sample>(kBlock * 50);
    const std::vector<Sample> right(left.rbegin(), left.rend());
    AudioDenoise stereo;
    AudioDenoise first;
    AudioDenoise second;
    stereo.Init(32000, 2, kFormat<Sample>, 2);
    first.Init(32000, 1, kFormat<Sample>, 2);
    second.Init(32000, 1, kFormat<Sample>, 2);
    EXPECT_TRUE(SameBits(Process(stereo, Interleaved(left, right)),
                         Interleaved(Process(first, left), Process(second, right))));
}

TEST(AudioDenoise, StereoIsTwoMonoStreams) {
    StereoIsTwoMonos<short>();
    StereoIsTwoMonos<float>();
}

TEST(AudioDenoise, At8000And16000HzABlockHolds80Or160NewSamplesAndZeros) {
    for (const int rate : {8000, 16000}) {
        const auto fresh = static_cast<std::size_t>(rate / 100);
        AudioDenoise denoise;
        ASSERT_EQ(denoise.Init(rate, 1, SAMPLE_FMT_S16, 3), RESULT_OK);
        BareSuppressor bare(rate, 3);
        const std::vector<short> in = Speech<short>(static_cast<int>(fresh) * 100);
        std::vector<short> expected;
        for (std::size_t at = 0; at < in.size(); at += fresh) {
            short block[320] = {};
            short out[320];
            std::copy_n(in.data() + at, fresh, block);
            bare.Process(block, out);
            expected.insert(expected.end(), out, out + fresh);
        }
        EXPECT_EQ(Process(denoise, in), expected) << rate;
    }
}

TEST(AudioDenoise, ARateThatTheSuppressorRefusesYieldsSilenceInBlocksOf10Ms) {
    for (const int rate : {100, 11025, 22050, 31999, 32001, 44100, 48000, 96000, 1000000}) {
        for (const int channels : {1, 2}) {
            AudioDenoise denoise;
            ASSERT_EQ(denoise.Init(rate, channels, SAMPLE_FMT_S16, 3), RESULT_OK);
            const auto block = static_cast<std::size_t>(rate / 100 * channels);
            const std::vector<short> in(block * 3 + static_cast<std::size_t>(channels), 1000);
            std::vector<short> out(in.size() + block, 77);
            int size = ByteCount(in);
            ASSERT_EQ(denoise.Process(BytesOf(in), BytesOf(out), size), RESULT_OK);
            ASSERT_EQ(size, static_cast<int>(block * 3 * sizeof(short)) +
                                (rate == 100 ? 2 * channels : 0))
                << rate;
            out.resize(static_cast<std::size_t>(size) / 2);
            EXPECT_EQ(out, std::vector<short>(out.size())) << rate;
            EXPECT_TRUE(denoise.Reset());
        }
    }
}

TEST(AudioDenoise, ABlockWhoseOutputSizeOverflowsAnIntReturns2) {
    AudioDenoise denoise;
    denoise.Init(32000, 1, SAMPLE_FMT_S16, 3);
    Process(denoise, std::vector<short>(319));
    char byte = 0;
    int size = INT32_MAX - 600;  // nothing is read
    EXPECT_EQ(denoise.Process(&byte, &byte, size), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(size, INT32_MAX - 600);
    EXPECT_EQ(denoise.mBuffered, 319);
}

TEST(AudioDenoise, TheHighestRateAllocatesNoMoreThanAnyOther) {
    AudioDenoise denoise;
    ASSERT_EQ(denoise.Init(INT32_MAX, 2, SAMPLE_FMT_FLT, 3), RESULT_OK);
    EXPECT_EQ(denoise.mFrameLen, 21474836);
    EXPECT_EQ(Process(denoise, std::vector<float>(2000, 0.5F)).size(), 0U);
    EXPECT_EQ(denoise.mBuffered, 1000);
    EXPECT_TRUE(denoise.Reset());
}

TEST(AudioDenoise, At48000HzSamplesBeyondABlockOf320AreNotStored) {
    AudioDenoise denoise;
    ASSERT_EQ(denoise.Init(48000, 1, SAMPLE_FMT_S16, 3), RESULT_OK);
    denoise.mInL = std::make_unique<char[]>(2 * 960);
    std::memset(denoise.mInL.get() + 2 * 320, 0x55, 2 * 640);
    Process(denoise, std::vector<short>(300, 1000));
    Process(denoise, std::vector<short>(180, 1000));
    EXPECT_EQ(denoise.mBuffered, 0) << "480 samples are 10 ms";
    EXPECT_EQ(std::count(denoise.mInL.get() + 2 * 320, denoise.mInL.get() + 2 * 960, 0x55), 1280);
}

TEST(AudioDenoise, ARateBelow100HzHasEmptyBlocksAndReturnsNothing) {
    for (const int rate : {1, 50, 99}) {
        AudioDenoise denoise;
        ASSERT_EQ(denoise.Init(rate, 2, SAMPLE_FMT_FLT, 3), RESULT_OK);
        EXPECT_EQ(Process(denoise, std::vector<float>(1000, 0.5F)).size(), 0U) << rate;
        EXPECT_EQ(denoise.mBuffered, 0);
    }
}

TEST(AudioDenoise, ALevelThatTheSuppressorRefusesYieldsSilence) {
    for (const int level : {4, 100, -1}) {
        AudioDenoise denoise;
        ASSERT_EQ(denoise.Init(32000, 1, SAMPLE_FMT_S16, level), RESULT_OK);
        EXPECT_EQ(Process(denoise, std::vector<short>(640, 1000)), std::vector<short>(640));
        EXPECT_FALSE(denoise.Config(3)) << "there is no suppressor";
    }
}

TEST(AudioDenoise, ASecondInitWithoutClearRestartsTheStream) {
    const std::vector<short> in = Speech<short>(kBlock * 20);
    AudioDenoise reused;
    reused.Init(32000, 2, SAMPLE_FMT_FLT, 1);
    Process(reused, std::vector<float>(1000, 0.25F));
    reused.Init(32000, 1, SAMPLE_FMT_S16, 3);
    AudioDenoise fresh;
    fresh.Init(32000, 1, SAMPLE_FMT_S16, 3);
    EXPECT_EQ(Process(reused, in), Process(fresh, in));
}

TEST(AudioDenoise, ResetDropsBufferedSamplesAndZeroesTheFiltersButKeepsTheNoiseEstimate) {
    const std::vector<short> in = Speech<short>(kBlock * 20);
    AudioDenoise denoise;
    denoise.Init(32000, 2, SAMPLE_FMT_S16, 3);
    Process(denoise, Interleaved(in, in));
    Process(denoise, std::vector<short>(100, 1000));
    EXPECT_EQ(denoise.mBuffered, 50);
    EXPECT_TRUE(denoise.Reset());
    EXPECT_EQ(denoise.mBuffered, 0);
    const std::vector<char> silence(640);
    for (const auto* buffer : {&denoise.mInL, &denoise.mInR, &denoise.mOutL, &denoise.mOutR}) {
        EXPECT_EQ(std::memcmp(buffer->get(), silence.data(), 640), 0);
    }
    for (const NSWrap* ns : {denoise.mNsL.get(), denoise.mNsR.get()}) {
        for (const auto* memory : {&ns->mAnalysisState1, &ns->mAnalysisState2,
                                   &ns->mSynthesisState1, &ns->mSynthesisState2}) {
            EXPECT_EQ(std::memcmp(memory->get(), silence.data(), 24), 0);
        }
    }
    AudioDenoise fresh;
    fresh.Init(32000, 2, SAMPLE_FMT_S16, 3);
    EXPECT_NE(Process(denoise, Interleaved(in, in)), Process(fresh, Interleaved(in, in)));
}

TEST(AudioDenoise, ResetOfANewOrClearedUnitChangesNothingAndIsTrue) {
    AudioDenoise denoise;
    EXPECT_TRUE(denoise.Reset());
    denoise.Init(32000, 2, SAMPLE_FMT_S16, 3);
    Process(denoise, std::vector<short>(100));
    denoise.Clear();
    EXPECT_TRUE(denoise.Reset());
    EXPECT_EQ(denoise.mBuffered, 50);
    EXPECT_FALSE(denoise.IsInited());
}

TEST(AudioDenoise, ClearReleasesEverythingAndInitStartsAgain) {
    AudioDenoise denoise;
    denoise.Init(32000, 2, SAMPLE_FMT_S16, 3);
    EXPECT_TRUE(denoise.Clear());
    EXPECT_FALSE(denoise.IsInited());
    EXPECT_EQ(denoise.mInL, nullptr);
    EXPECT_EQ(denoise.mInR, nullptr);
    EXPECT_EQ(denoise.mOutL, nullptr);
    EXPECT_EQ(denoise.mOutR, nullptr);
    EXPECT_EQ(denoise.mNsL, nullptr);
    EXPECT_EQ(denoise.mNsR, nullptr);
    EXPECT_TRUE(denoise.Clear());
    EXPECT_EQ(denoise.Init(32000, 1, SAMPLE_FMT_S16, 3), RESULT_OK);
    EXPECT_EQ(denoise.mNsR, nullptr);
}

TEST(AudioDenoise, TheBlockBuffersOfANewStreamAreZeros) {
    AudioDenoise denoise;
    denoise.Init(32000, 2, SAMPLE_FMT_FLT, 3);
    const std::vector<char> silence(1280);
    for (const auto* buffer : {&denoise.mInL, &denoise.mInR, &denoise.mOutL, &denoise.mOutR}) {
        EXPECT_EQ(std::memcmp(buffer->get(), silence.data(), 1280), 0);
    }
}

TEST(AudioDenoise, SplitLRAppendsToTheBufferedSamples) {
    AudioDenoise denoise;
    denoise.Init(32000, 2, SAMPLE_FMT_S16, 3);
    short frames[6] = {1, -1, 2, -2, 3, -3};
    EXPECT_EQ(denoise.SplitLR(reinterpret_cast<char*>(frames), 1), RESULT_OK);
    EXPECT_EQ(denoise.SplitLR(reinterpret_cast<char*>(frames + 2), 2), RESULT_OK);
    EXPECT_EQ(denoise.mBuffered, 3);
    const short left[3] = {1, 2, 3};
    const short right[3] = {-1, -2, -3};
    EXPECT_EQ(std::memcmp(denoise.mInL.get(), left, 6), 0);
    EXPECT_EQ(std::memcmp(denoise.mInR.get(), right, 6), 0);
}

TEST(AudioDenoise, SplitLROfAnUnknownFormatCopiesNothingButCountsTheSamples) {
    AudioDenoise denoise;
    denoise.Init(32000, 2, SAMPLE_FMT_S16, 3);
    denoise.mFmt = SAMPLE_FMT_S32;
    int frames[4] = {1, 2, 3, 4};
    EXPECT_EQ(denoise.SplitLR(reinterpret_cast<char*>(frames), 2), RESULT_OK);
    EXPECT_EQ(denoise.mBuffered, 2);
    EXPECT_EQ(std::memcmp(denoise.mInL.get(), std::vector<char>(640).data(), 640), 0);
}

TEST(AudioDenoise, SplitLROfPlanarFormatsCopiesAsIfInterleaved) {
    for (const SampleFmt fmt : {SAMPLE_FMT_S16P, SAMPLE_FMT_FLTP}) {
        AudioDenoise denoise;
        denoise.Init(32000, 2, fmt, 3);
        char frames[8] = {1, 2, 3, 4, 5, 6, 7, 8};
        EXPECT_EQ(denoise.SplitLR(frames, 1), RESULT_OK);
        EXPECT_EQ(denoise.mInL[0], 1);
        EXPECT_EQ(denoise.mInR[0], fmt == SAMPLE_FMT_S16P ? 3 : 5);
    }
}

TEST(AudioDenoise, SplitLRAndLaterBlocksStayInsideTheBlockBuffers) {
    AudioDenoise denoise;
    denoise.Init(32000, 2, SAMPLE_FMT_S16, 3);
    std::vector<short> frames(2000, 1000);
    EXPECT_EQ(denoise.SplitLR(BytesOf(frames), 300), RESULT_OK);
    EXPECT_EQ(denoise.SplitLR(BytesOf(frames), 700), RESULT_OK) << "20 of them fit";
    EXPECT_EQ(denoise.mBuffered, 1000);
    EXPECT_EQ(denoise.SplitLR(BytesOf(frames), 1), RESULT_OK);
    EXPECT_EQ(Process(denoise, std::vector<short>(100)).size(), 640U);
    EXPECT_LE(denoise.mBuffered, 320);
    EXPECT_EQ(denoise.Reset(), true);
    EXPECT_EQ(denoise.SplitLR(BytesOf(frames), -400), RESULT_OK) << "none";
    EXPECT_EQ(denoise.mBuffered, 0);
    AudioDenoise fresh;
    EXPECT_EQ(fresh.SplitLR(BytesOf(frames), 10), RESULT_OK);
    EXPECT_EQ(fresh.mBuffered, 10);
}

TEST(AudioDenoise, CombineLRInterleavesTheProcessedBlocks) {
    AudioDenoise denoise;
    denoise.Init(32000, 2, SAMPLE_FMT_FLT, 3);
    reinterpret_cast<float*>(denoise.mOutL.get())[1] = 0.5F;
    reinterpret_cast<float*>(denoise.mOutR.get())[1] = -0.5F;
    float out[5] = {9, 9, 9, 9, 9};
    EXPECT_EQ(denoise.CombineLR(reinterpret_cast<char*>(out), 2), RESULT_OK);
    EXPECT_EQ(std::vector<float>(out, out + 5), (std::vector<float>{0, 0, 0.5F, -0.5F, 9}));
    std::vector<float> all(800, 9.0F);
    EXPECT_EQ(denoise.CombineLR(BytesOf(all), 400), RESULT_OK);
    EXPECT_EQ(all[639], 0.0F);
    EXPECT_EQ(all[640], 9.0F) << "a block holds 320 samples";
    AudioDenoise fresh;
    EXPECT_EQ(fresh.CombineLR(reinterpret_cast<char*>(out), 2), RESULT_OK);
}

TEST(AudioDenoise, BlocksAtOddAddressesGiveTheSameOutput) {
    const std::vector<short> in = Speech<short>(kBlock * 4);
    AudioDenoise denoise;
    AudioDenoise twin;
    denoise.Init(32000, 2, SAMPLE_FMT_S16, 3);
    twin.Init(32000, 2, SAMPLE_FMT_S16, 3);
    std::vector<char> bytes(in.size() * 2 + 1);
    std::vector<char> out(bytes.size() + 2000);
    std::memcpy(bytes.data() + 1, in.data(), in.size() * 2);
    int size = ByteCount(in);
    ASSERT_EQ(denoise.Process(bytes.data() + 1, out.data() + 1, size), RESULT_OK);
    const std::vector<short> expected = Process(twin, in);
    ASSERT_EQ(size, ByteCount(expected));
    EXPECT_EQ(std::memcmp(out.data() + 1, expected.data(), static_cast<std::size_t>(size)), 0);
}

TEST(AudioDenoise, NoiseAloneDropsByAtLeast15dBAtLevel3) {
    std::mt19937 random = SeededRandom();
    std::normal_distribution<double> gauss(0.0, 200.0);
    std::vector<short> noise(32000 * 5);
    for (short& sample : noise) {
        sample = static_cast<short>(std::lround(gauss(random)));
    }
    AudioDenoise denoise;
    denoise.Init(32000, 1, SAMPLE_FMT_S16, 3);
    const std::vector<short> out = Process(denoise, noise);
    double in = 0.0;
    double left = 0.0;
    for (std::size_t i = 32000 * 3; i < out.size(); ++i) {
        in += noise[i] * noise[i];
        left += out[i] * out[i];
    }
    EXPECT_GT(10.0 * std::log10(in / left), 15.0);
}

}  // namespace
