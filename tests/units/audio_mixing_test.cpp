#include "units/audio_mixing.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <new>
#include <vector>

#include "common/result_code.h"
#include "support/bytes.h"
#include "support/seed.h"
#include "units/mix_limiter.h"

using namespace audio_filter::internal;

namespace {

std::unique_ptr<AudioMixing> ReadyMixing(SampleFmt fmt) {
    auto mixing = std::make_unique<AudioMixing>();
    EXPECT_EQ(mixing->Init(fmt), RESULT_OK);
    return mixing;
}

template <typename Sample>
struct Mixed {
    int code;
    int size;
    std::vector<Sample> out;  ///< as long as the input, filled with 77 before the call
};

template <typename Sample>
Mixed<Sample> Mix(AudioMixing& mixing, const std::vector<Sample>& in, int sources, int size) {
    Mixed<Sample> mixed = {0, size, std::vector<Sample>(in.size(), 77)};
    mixed.code = mixing.Process(BytesOf(in), BytesOf(mixed.out), mixed.size, sources);
    return mixed;
}

template <typename Sample>
Mixed<Sample> Mix(AudioMixing& mixing, const std::vector<Sample>& in, int sources) {
    return Mix(mixing, in, sources, ByteCount(in));
}

TEST(AudioMixing, InitTakesFormats1_3_6_8AndRefusesTheRestWithMinus1) {
    for (int fmt = -3; fmt < 14; ++fmt) {
        const auto mixing = std::make_unique<AudioMixing>();
        const bool known = fmt == 1 || fmt == 3 || fmt == 6 || fmt == 8;
        EXPECT_EQ(mixing->Init(static_cast<SampleFmt>(fmt)), known ? RESULT_OK : RESULT_FAILURE)
            << fmt;
        EXPECT_EQ(mixing->IsInited(), known);
        EXPECT_EQ(mixing->mFmt, known ? fmt : -1);
    }
}

TEST(AudioMixing, ARefusedInitKeepsTheEarlierFormatButIsNotInitialised) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_FLTP);
    EXPECT_EQ(mixing->Init(SAMPLE_FMT_S32), RESULT_FAILURE);
    EXPECT_FALSE(mixing->IsInited());
    EXPECT_EQ(mixing->mFmt, SAMPLE_FMT_FLTP);
}

TEST(AudioMixing, AClearedUnitIsNotInitialisedAndHasNoFormat) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    EXPECT_TRUE(mixing->Clear());
    EXPECT_FALSE(mixing->IsInited());
    EXPECT_EQ(mixing->mFmt, -1);
}

TEST(AudioMixing, TwoSamplesOf20000LeaveAs29463) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    const auto mixed = Mix(*mixing, std::vector<short>{20000, 20000}, 2);
    EXPECT_EQ(mixed.code, RESULT_OK);
    EXPECT_EQ(mixed.size, 2);
    EXPECT_EQ(mixed.out, (std::vector<short>{29463, 77}));
}

TEST(AudioMixing, Samples16384AndMinus16384LeaveAs0) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    EXPECT_EQ(Mix(*mixing, std::vector<short>{16384, -16384}, 2).out[0], 0);
}

TEST(AudioMixing, ASumOfMinus32768LeavesAsMinus28672) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    EXPECT_EQ(Mix(*mixing, std::vector<short>{-32768, 0}, 2).out[0], -28672);
}

TEST(AudioMixing, ASingleSourceIsCopiedUnchangedWithAllItsBytes) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    const std::vector<short> in = {-32768, 32767, 1, 0x0505};
    const auto mixed = Mix(*mixing, in, 1, 7);
    EXPECT_EQ(mixed.code, RESULT_OK);
    EXPECT_EQ(mixed.size, 7);
    EXPECT_EQ(std::memcmp(mixed.out.data(), in.data(), 7), 0);
    EXPECT_NE(mixed.out[3], in[3]) << "the eighth byte is not written";
}

TEST(AudioMixing, ASingleSourceInPlaceIsUnchanged) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    std::vector<short> samples = {5, -6};
    int size = 4;
    EXPECT_EQ(mixing->Process(BytesOf(samples), BytesOf(samples), size, 1), RESULT_OK);
    EXPECT_EQ(size, 4);
    EXPECT_EQ(samples, (std::vector<short>{5, -6}));
}

TEST(AudioMixing, OneOfTwoSourcesWithTheOtherSilentIsScaledBy7_8) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    const auto mixed = Mix(*mixing, std::vector<short>{8000, -8000, 0, 0}, 2);
    EXPECT_EQ(mixed.out[0], 7000);
    EXPECT_EQ(mixed.out[1], -7000);
}

TEST(AudioMixing, ASingleSourceThroughThePrivateMixIsScaledBy7_8) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    short in[2] = {8000, -8000};
    short out[2] = {};
    int count = 2;
    EXPECT_EQ(mixing->DoProcess(in, out, count, 1), RESULT_OK);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(out[0], 7000);
    EXPECT_EQ(out[1], -7000);
}

TEST(AudioMixing, SevenSamplesOfTwoSourcesReturn3AndSizeIsThatOfTheInput) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    const auto mixed = Mix(*mixing, std::vector<short>(7, 5), 2);
    EXPECT_EQ(mixed.code, RESULT_INVALID);
    EXPECT_EQ(mixed.size, 14);
    EXPECT_EQ(mixed.out, std::vector<short>(7, 77));
}

TEST(AudioMixing, ASizeThatIsNotWholeSamplesIsRoundedDownEvenWhenCode3Returns) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    const auto refused = Mix(*mixing, std::vector<short>(8, 5), 2, 15);
    EXPECT_EQ(refused.code, RESULT_INVALID);
    EXPECT_EQ(refused.size, 14);
    const auto mixed = Mix(*mixing, std::vector<short>(8, 5), 2, 13);
    EXPECT_EQ(mixed.code, RESULT_OK);
    EXPECT_EQ(mixed.size, 6);
    const auto flt = ReadyMixing(SAMPLE_FMT_FLT);
    const auto floats = Mix(*flt, std::vector<float>(8, 0.5F), 3, 31);
    EXPECT_EQ(floats.code, RESULT_INVALID);
    EXPECT_EQ(floats.size, 28);
}

TEST(AudioMixing, ASizeBelowOneSampleMixesNothingAndReturns0) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_FLT);
    const auto mixed = Mix(*mixing, std::vector<float>(2, 1.0F), 2, 3);
    EXPECT_EQ(mixed.code, RESULT_OK);
    EXPECT_EQ(mixed.size, 0);
    EXPECT_EQ(mixed.out[0], 77.0F);
    const auto s16 = ReadyMixing(SAMPLE_FMT_S16);
    EXPECT_EQ(Mix(*s16, std::vector<short>(2, 5), 2, 1).code, RESULT_OK);
    EXPECT_EQ(Mix(*s16, std::vector<short>(2, 5), 2, 1).size, 0);
}

TEST(AudioMixing, SixteenSourcesAreMixed) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    EXPECT_EQ(Mix(*mixing, std::vector<short>(16, 1000), 16).out[0], 14000);
    EXPECT_EQ(mixing->mScratch[15][0], 1000);
}

TEST(AudioMixing, SamplesBeyondABlockOf1920ReuseTheScratchFromItsStart) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    std::vector<short> in(2 * 1921, 5);
    in[1920] = 7;
    Mix(*mixing, in, 2);
    EXPECT_EQ(mixing->mScratch[0][0], 7);
    EXPECT_EQ(mixing->mScratch[0][1], 5);
    EXPECT_EQ(mixing->mScratch[0][1919], 5);
}

TEST(AudioMixing, TheScratchOfANewUnitIsZero) {
    std::vector<std::max_align_t> memory(sizeof(AudioMixing) / sizeof(std::max_align_t) + 1);
    std::memset(memory.data(), 0x55, sizeof(AudioMixing));
    const auto* mixing = new (memory.data()) AudioMixing;
    for (const auto& row : mixing->mScratch) {
        for (const short sample : row) {
            ASSERT_EQ(sample, 0);
        }
    }
}

TEST(AudioMixing, APrivateMixOf0OrFewerSamplesIsEmptyAndOf0OrTooManySourcesReturns2) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    short s16[4] = {1, 2, 3, 4};
    float flt[4] = {1, 2, 3, 4};
    for (const int given : {0, -4, -2}) {
        int count = given;
        EXPECT_EQ(mixing->DoProcess(s16, s16, count, 2), RESULT_OK) << given;
        EXPECT_EQ(count, 0);
        count = given;
        EXPECT_EQ(mixing->DoProcess(flt, flt, count, 2), RESULT_OK) << given;
        EXPECT_EQ(count, 0);
    }
    for (const int sources : {0, -2, 17}) {
        int count = 4;
        EXPECT_EQ(mixing->DoProcess(s16, s16, count, sources), RESULT_BAD_ARGUMENT) << sources;
        EXPECT_EQ(count, 4);
    }
    EXPECT_EQ(s16[0], 1);
}

TEST(AudioMixing, Float1WithASilentSecondSourceLeavesAs28671Of32767) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_FLT);
    const auto mixed = Mix(*mixing, std::vector<float>{1.0F, 0.0F}, 2);
    EXPECT_EQ(mixed.code, RESULT_OK);
    EXPECT_EQ(mixed.size, 4);
    EXPECT_EQ(mixed.out[0], 28671.0F / 32767.0F);
    EXPECT_EQ(mixing->mScratch[0][0], 32767);
}

TEST(AudioMixing, PlanarFormatsMixLikeTheirInterleavedForms) {
    EXPECT_EQ(Mix(*ReadyMixing(SAMPLE_FMT_S16P), std::vector<short>{20000, 20000}, 2).out[0],
              29463);
    EXPECT_EQ(Mix(*ReadyMixing(SAMPLE_FMT_FLTP), std::vector<float>{1.0F, 0.0F}, 2).out[0],
              28671.0F / 32767.0F);
}

TEST(AudioMixing, NotInitialisedReturns4BeforeABadArgumentReturns2) {
    const auto mixing = std::make_unique<AudioMixing>();
    int size = 0;
    EXPECT_EQ(mixing->Process(nullptr, nullptr, size, 0), RESULT_NOT_INITIALISED);
}

TEST(AudioMixing, BadArgumentsReturn2AndChangeNothing) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    const std::vector<short> in(64, 5);
    std::vector<short> out(64, 77);
    const auto code = [&](const char* from, char* to, int size, int sources) {
        int kept = size;
        const int result = mixing->Process(from, to, kept, sources);
        EXPECT_EQ(kept, size);
        return result;
    };
    EXPECT_EQ(code(nullptr, BytesOf(out), 4, 2), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(code(BytesOf(in), nullptr, 4, 2), RESULT_BAD_ARGUMENT);
    for (const int size : {0, -1, -4, INT32_MIN}) {
        EXPECT_EQ(code(BytesOf(in), BytesOf(out), size, 2), RESULT_BAD_ARGUMENT) << size;
        EXPECT_EQ(code(BytesOf(in), BytesOf(out), size, 1), RESULT_BAD_ARGUMENT) << size;
    }
    for (const int sources : {0, -1, 17, 1000, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(code(BytesOf(in), BytesOf(out), 128, sources), RESULT_BAD_ARGUMENT) << sources;
    }
    EXPECT_EQ(out, std::vector<short>(64, 77));
}

TEST(AudioMixing, AnUnknownFormatInProcessReturns12AndChangesNothing) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    mixing->mFmt = SAMPLE_FMT_S32;
    const auto mixed = Mix(*mixing, std::vector<short>{1, 2}, 2);
    EXPECT_EQ(mixed.code, RESULT_PASSED_THROUGH);
    EXPECT_EQ(mixed.size, 4);
    EXPECT_EQ(mixed.out, std::vector<short>(2, 77));
}

/// Any number of sources and any length against the sum of all, sample by sample.
template <typename Sample>
void MixesLikeASum(SampleFmt fmt, bool inPlace) {
    std::mt19937 random = SeededRandom();
    const auto mixing = ReadyMixing(fmt);
    for (const int length : {1, 2, 7, 1919, 1920, 1921, 3840, 5000}) {
        const int sources = RandomInt(random, 2, 16);
        std::vector<Sample> in(static_cast<std::size_t>(sources * length));
        for (Sample& sample : in) {
            const int value = RandomInt(random, -32768, 32767);
            if constexpr (std::is_same_v<Sample, float>) {
                sample = static_cast<float>(value) / 20000.0F;
            } else {
                sample = static_cast<short>(value);
            }
        }
        std::vector<Sample> expected(static_cast<std::size_t>(length));
        for (std::size_t i = 0; i < expected.size(); ++i) {
            int sum = 0;
            for (std::size_t k = 0; k < static_cast<std::size_t>(sources); ++k) {
                sum += ToMixerSample(in[k * expected.size() + i]);
            }
            expected[i] = FromMixerSample<Sample>(LimitSum(sum));
        }
        std::vector<Sample> out(in.size());
        char* target = inPlace ? BytesOf(in) : BytesOf(out);
        int size = ByteCount(in);
        ASSERT_EQ(mixing->Process(BytesOf(in), target, size, sources), RESULT_OK);
        ASSERT_EQ(size, ByteCount(expected));
        ASSERT_EQ(std::memcmp(target, expected.data(), static_cast<std::size_t>(size)), 0)
            << length << " samples of " << sources << " sources";
    }
}

TEST(AudioMixing, AnyNumberOfSourcesAndSamplesGivesTheLimitedSum) {
    MixesLikeASum<short>(SAMPLE_FMT_S16, false);
    MixesLikeASum<float>(SAMPLE_FMT_FLT, false);
}

TEST(AudioMixing, MixesInPlace) {
    MixesLikeASum<short>(SAMPLE_FMT_S16, true);
    MixesLikeASum<float>(SAMPLE_FMT_FLT, true);
}

TEST(AudioMixing, BlocksAtOddAddressesAreMixedLikeAnyOther) {
    const auto mixing = ReadyMixing(SAMPLE_FMT_S16);
    char bytes[9] = {};
    const short in[4] = {20000, -1, 20000, 1};
    std::memcpy(bytes + 1, in, sizeof(in));
    int size = 8;
    EXPECT_EQ(mixing->Process(bytes + 1, bytes + 1, size, 2), RESULT_OK);
    short out[2] = {};
    std::memcpy(out, bytes + 1, sizeof(out));
    EXPECT_EQ(out[0], 29463);
    EXPECT_EQ(out[1], 0);
}

}  // namespace
