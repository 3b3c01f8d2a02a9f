#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "classifier/audio_classifier.h"
#include "classifier/plain_model.h"
#include "common/result_code.h"
#include "support/bytes.h"
#include "support/seed.h"

namespace {

class AudioClassifierRoutines : public testing::Test {
protected:
    void Take(SampleFmt format, int rate = 32000) {
        ASSERT_EQ(classifier.Init(1, rate, format), RESULT_OK);
    }

    /// Takes ownership of an array that a routine returned.
    static std::vector<float> Values(float* array, std::size_t count) {
        const std::unique_ptr<float[]> owner(array);
        return std::vector<float>(array, array + count);
    }

    std::vector<std::vector<float>> Segments(std::vector<float> signal, unsigned short length,
                                             unsigned short hop) {
        float** rows = classifier.frameSeg(signal.data(),
                                           static_cast<unsigned short>(signal.size()), length, hop);
        std::vector<std::vector<float>> segments;
        for (unsigned i = 0; i < classifier.mFrameCount; ++i) {
            segments.emplace_back(rows[i], rows[i] + length);
        }
        classifier.array2dDelete(reinterpret_cast<void**>(rows), classifier.mFrameCount);
        return segments;
    }

    AudioClassifier classifier;
};

TEST_F(AudioClassifierRoutines, GetSampleByteOf2And3And7And8And10Is4) {
    const std::vector<std::pair<int, int>> bytes = {
        {0, 1}, {1, 2}, {2, 4}, {3, 4},  {4, 8},  {5, 1},         {6, 2},
        {7, 4}, {8, 4}, {9, 8}, {10, 4}, {-1, 4}, {INT32_MIN, 4}, {INT32_MAX, 4}};
    for (const auto& [format, expected] : bytes) {
        EXPECT_EQ(classifier.getSampleByte(static_cast<SampleFmt>(format)), expected) << format;
    }
}

TEST_F(AudioClassifierRoutines, GetAlgoParamOf44100And48000AndAnyOtherRate) {
    struct Column {
        int rate, sampleRate, frameLength;
        unsigned hop, bandStart, fftSize;
    };
    for (const Column& column :
         {Column{32000, 32000, 1024, 512, 16000, 63998},
          Column{44100, 44100, 1412, 706, 22050, 88198},
          Column{48000, 48000, 1536, 768, 24000, 95998},
          Column{16000, 32000, 1024, 512, 16000, 63998},
          Column{8000, 32000, 1024, 512, 16000, 63998}, Column{0, 32000, 1024, 512, 16000, 63998},
          Column{44099, 32000, 1024, 512, 16000, 63998},
          Column{65535, 32000, 1024, 512, 16000, 63998}}) {
        const algoParam param = classifier.getAlgoParam(static_cast<unsigned short>(column.rate));
        EXPECT_EQ(param.emphasis, 0.97F);
        EXPECT_EQ(param.sampleRate, column.sampleRate);
        EXPECT_EQ(param.frameLength, column.frameLength);
        EXPECT_EQ(param.hop, column.hop);
        EXPECT_EQ(param.bandStart, column.bandStart);
        EXPECT_EQ(param.fftSize, column.fftSize);
        const float thresholds[] = {0.5F, 0.25F, 0.125F, 0.0625F};
        EXPECT_EQ(std::memcmp(param.lowEnergyThresholds, thresholds, sizeof(thresholds)), 0);
        EXPECT_EQ(std::memcmp(param.lowEnergyCentres, kPlainLowEnergyCentres, 64), 0);
        EXPECT_EQ(std::memcmp(param.subBandCentres, kPlainSubBandCentres, 48), 0);
    }
}

template <typename Sample>
void ExpectSplit(AudioClassifier& classifier, SampleFmt format) {
    std::vector<Sample> both = {1, -2, 3, -4, 5, -6};
    std::vector<Sample> left(3, 9);
    std::vector<Sample> right(3, 9);
    classifier.splitLR(BytesOf(both), reinterpret_cast<unsigned char*>(left.data()),
                       reinterpret_cast<unsigned char*>(right.data()), 2, format);
    EXPECT_EQ(left, (std::vector<Sample>{1, 3, 9}));
    EXPECT_EQ(right, (std::vector<Sample>{-2, -4, 9}));
}

TEST_F(AudioClassifierRoutines, SplitLRDeinterleaves16BitAndFloatSamples) {
    ExpectSplit<std::int16_t>(classifier, SAMPLE_FMT_S16);
    ExpectSplit<std::int16_t>(classifier, SAMPLE_FMT_S16P);
    ExpectSplit<float>(classifier, SAMPLE_FMT_FLT);
    ExpectSplit<float>(classifier, SAMPLE_FMT_FLTP);
}

TEST_F(AudioClassifierRoutines, SplitLRWritesNothingFor0SamplesOrAnotherFormat) {
    std::vector<char> both(64, 'b');
    std::vector<unsigned char> left(32, 'l');
    std::vector<unsigned char> right(32, 'r');
    for (int format = -1; format <= 10; ++format) {
        const bool known = format == 1 || format == 3 || format == 6 || format == 8;
        for (const int samples : known ? std::vector<int>{0, -1, INT32_MIN} : std::vector<int>{4}) {
            classifier.splitLR(both.data(), left.data(), right.data(), samples,
                               static_cast<SampleFmt>(format));
        }
    }
    EXPECT_EQ(left, std::vector<unsigned char>(32, 'l'));
    EXPECT_EQ(right, std::vector<unsigned char>(32, 'r'));
}

TEST_F(AudioClassifierRoutines, EmphasisReads16BitAndFloatSamplesOfTheStream) {
    short integers[] = {100, 200};
    float floats[] = {0.5F, 0.25F};
    for (const SampleFmt format : {SAMPLE_FMT_S16, SAMPLE_FMT_S16P}) {
        Take(format);
        auto* in = reinterpret_cast<unsigned char*>(integers);
        EXPECT_EQ(Values(classifier.emphasis(in, 2, 0.5F), 2), (std::vector<float>{100, 150}));
    }
    for (const SampleFmt format : {SAMPLE_FMT_FLT, SAMPLE_FMT_FLTP}) {
        Take(format);
        auto* in = reinterpret_cast<unsigned char*>(floats);
        EXPECT_EQ(Values(classifier.emphasis(in, 2, 0.5F), 2), (std::vector<float>{0.5F, 0.0F}));
    }
}

TEST_F(AudioClassifierRoutines, EmphasisOfNoSamplesWritesNothingAndWithoutAFormatReturnsZeros) {
    unsigned char in[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(Values(classifier.emphasis(in, 2, 0.97F), 2), (std::vector<float>{0.0F, 0.0F}));
    Take(SAMPLE_FMT_S16);
    EXPECT_TRUE(Values(classifier.emphasis(in, 0, 0.97F), 0).empty());
}

TEST_F(AudioClassifierRoutines, HammingWindowOf1IsNaNAndOf3Is0_08And1And0_08) {
    EXPECT_TRUE(std::isnan(Values(classifier.hammingWindow(1, 1.0F), 1)[0]));
    const std::vector<float> window = Values(classifier.hammingWindow(3, 2.0F), 3);
    EXPECT_FLOAT_EQ(window[0], 0.16F);
    EXPECT_FLOAT_EQ(window[1], 2.0F);
    EXPECT_EQ(window[2], window[0]);
    Values(classifier.hammingWindow(0, 1.0F), 0);
}

TEST_F(AudioClassifierRoutines, HadmanMultiMultipliesInPlace) {
    float data[] = {1.0F, 2.0F, 3.0F};
    float window[] = {2.0F, 0.5F, 9.0F};
    classifier.hadmanMulti(data, window, 2);
    EXPECT_EQ(data[0], 2.0F);
    EXPECT_EQ(data[1], 1.0F);
    EXPECT_EQ(data[2], 3.0F);
}

TEST_F(AudioClassifierRoutines, FrameSegOf9SamplesWithLength4AndHop2IsThreeWindowedSegments) {
    const std::vector<float> signal = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    const std::vector<float> window = Values(classifier.hammingWindow(4, 1.0F), 4);
    const auto segments = Segments(signal, 4, 2);
    ASSERT_EQ(segments.size(), 3U);
    for (std::size_t k = 0; k < 3; ++k) {
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(segments[k][i], signal[2 * k + i] * window[i]);
        }
    }
}

TEST_F(AudioClassifierRoutines, FrameSegOf100SamplesWithLength1024HasNoSegment) {
    EXPECT_TRUE(Segments(std::vector<float>(100, 1.0F), 1024, 512).empty());
    EXPECT_EQ(classifier.mFrameCount, 0);
    EXPECT_EQ(classifier.mWindow.size(), 1024U);
}

TEST_F(AudioClassifierRoutines, FrameSegOf600SamplesWithLength1024PadsWith424Zeros) {
    const auto segments = Segments(std::vector<float>(600, 1.0F), 1024, 512);
    ASSERT_EQ(segments.size(), 1U);
    EXPECT_NE(segments[0][599], 0.0F);
    for (std::size_t i = 600; i < 1024; ++i) {
        ASSERT_EQ(segments[0][i], 0.0F);
    }
}

TEST_F(AudioClassifierRoutines, FrameSegWithoutAHopHasNoSegment) {
    EXPECT_TRUE(Segments(std::vector<float>(10, 1.0F), 4, 0).empty());
}

TEST_F(AudioClassifierRoutines, TheWindowIsRebuiltOnlyForAnotherLength) {
    Segments(std::vector<float>(16, 1.0F), 8, 4);
    classifier.mWindow[0] = 7.0F;
    EXPECT_EQ(Segments(std::vector<float>(16, 1.0F), 8, 4)[0][0], 7.0F);
    Segments(std::vector<float>(16, 1.0F), 9, 4);
    EXPECT_NE(Segments(std::vector<float>(16, 1.0F), 8, 4)[0][0], 7.0F);
}

TEST_F(AudioClassifierRoutines, FftReturnsHalfTheSizeAnd1Magnitudes) {
    std::mt19937 random = SeededRandom();
    for (const std::size_t size : {0U, 1U, 2U, 3U, 7U, 64U, 63998U}) {
        std::vector<float> signal(RandomInt(random, 0, 1) == 0 ? size : size / 3);
        for (float& sample : signal) {
            sample = static_cast<float>(RandomInt(random, -32768, 32767));
        }
        float* magnitudes = classifier.fft(signal.data(), static_cast<unsigned>(signal.size()),
                                           static_cast<unsigned>(size));
        EXPECT_TRUE(SameBits(Values(magnitudes, size / 2 + 1), PlainSpectrum(signal, size)))
            << size;
    }
}

TEST_F(AudioClassifierRoutines, SubBandEnergyRateStartsAtHalfTheRateOfTheStream) {
    for (const auto& [rate, start] : {std::pair{32000, 16000}, {8000, 16000}, {48000, 24000}}) {
        Take(SAMPLE_FMT_S16, rate);
        std::vector<float> magnitudes(2 * static_cast<std::size_t>(start));
        magnitudes[static_cast<std::size_t>(start) - 1] = 50.0F;
        magnitudes[static_cast<std::size_t>(start)] = 1.0F;
        magnitudes.back() = 1.0F;
        EXPECT_EQ(Values(classifier.subBandEnergyRate(magnitudes.data()), 3),
                  (std::vector<float>{0.5F, 0.0F, 0.5F}));
    }
}

TEST_F(AudioClassifierRoutines, DistanceOf345Is5) {
    float a[] = {1.0F, 2.0F, 100.0F};
    float b[] = {4.0F, 6.0F, 0.0F};
    EXPECT_EQ(classifier.distance(a, b, 2), 5.0F);
    EXPECT_EQ(classifier.distance(a, b, 0), 0.0F);
}

TEST_F(AudioClassifierRoutines, Array2dCreateAllocatesEachRowSeparatelyAndZeroesIt) {
    void** rows = classifier.array2dCreate(3, 5, 4);
    for (int i = 0; i < 3; ++i) {
        const char* row = static_cast<char*>(rows[i]);
        EXPECT_EQ(std::vector<char>(row, row + 20), std::vector<char>(20));
    }
    classifier.array2dDelete(rows, 3);
    classifier.array2dDelete(classifier.array2dCreate(0, 5, 4), 0);
    classifier.array2dDelete(classifier.array2dCreate(2, 0, 4), 2);
}

TEST_F(AudioClassifierRoutines, LowEnergyFrameRateCountsStrictlyBelowTheLimit) {
    float quiet[] = {1.0F, 0.0F};
    float same[] = {1.0F, 1.0F};
    float loud[] = {3.0F, 0.0F};
    float* segments[] = {quiet, same, loud};  // energies 1, 2, 9 with the mean 4
    EXPECT_EQ(classifier.lowEnergyFrameRate(segments, 2, 3, 0.5F), 1.0F / 3.0F);
    EXPECT_EQ(classifier.lowEnergyFrameRate(segments, 2, 3, 0.51F), 2.0F / 3.0F);
    EXPECT_TRUE(std::isnan(classifier.lowEnergyFrameRate(nullptr, 2, 0, 0.5F)));
}

TEST_F(AudioClassifierRoutines, MusicCheckByLowEnergyFrameRateIsTrueUnlessARowIsNearestToCentre0) {
    algoParam param = classifier.getAlgoParam(32000);
    float steady[] = {1.0F};
    float loud[] = {100.0F};
    float* even[] = {steady, steady, steady, steady, steady};
    float* uneven[] = {steady, steady, steady, loud, loud};  // a rate of 0.6 in every row
    EXPECT_TRUE(classifier.musicCheckByLowEnergyFrameRate(even, 1, 5, param.lowEnergyThresholds,
                                                          param.lowEnergyCentres));
    EXPECT_FALSE(classifier.musicCheckByLowEnergyFrameRate(uneven, 1, 5, param.lowEnergyThresholds,
                                                           param.lowEnergyCentres));
}

TEST_F(AudioClassifierRoutines, NearestCenterGivesATieToTheLaterCentre) {
    float a[] = {0.0F, 0.0F};
    float b[] = {2.0F, 0.0F};
    float c[] = {0.0F, 5.0F};
    float* centres[] = {a, b, c};
    float between[] = {1.0F, 0.0F};
    EXPECT_EQ(classifier.nearestCenter(between, centres, 3, 2), b);
    float nearA[] = {0.9F, 0.0F};
    EXPECT_EQ(classifier.nearestCenter(nearA, centres, 3, 2), a);
    float nearC[] = {0.0F, 4.0F};
    EXPECT_EQ(classifier.nearestCenter(nearC, centres, 3, 2), c);
    EXPECT_EQ(classifier.nearestCenter(nearC, centres, 3, 0), c);  // all at 0
}

TEST_F(AudioClassifierRoutines, NearestCenterOfNoCentresOrOfNaNIsTheFirstRow) {
    float a[] = {0.0F};
    float b[] = {2.0F};
    float* centres[] = {a, b};
    float point[] = {2.0F};
    float nan[] = {NAN};
    EXPECT_EQ(classifier.nearestCenter(point, centres, 0, 1), a);
    EXPECT_EQ(classifier.nearestCenter(nan, centres, 2, 1), a);
}

TEST_F(AudioClassifierRoutines, MusicCheckByFftComparesTheCentresByValue) {
    // An impulse has a nearly flat spectrum, with ratios near 1/8, 1/4 and 1/2.
    std::vector<float> signal(8, 0.0F);
    signal[0] = 1.0F;
    float same[] = {0.0F, 0.0F, 0.0F};
    float alike[] = {0.0F, 0.0F, 0.0F};
    float far[] = {9.0F, 9.0F, 9.0F};
    float nearer[] = {0.125F, 0.25F, 0.5F};
    float* equal[] = {same, far, alike, far};  // the later of the equals is chosen
    EXPECT_FALSE(classifier.musicCheckByFft(signal.data(), 8, 63998, equal));
    float* other[] = {same, far, nearer, far};
    EXPECT_TRUE(classifier.musicCheckByFft(signal.data(), 8, 63998, other));
}

TEST_F(AudioClassifierRoutines, MusicCheckByFftOfSilenceOrOfTooSmallATransformIsFalse) {
    algoParam param = classifier.getAlgoParam(32000);
    float* centres[] = {param.subBandCentres[0], param.subBandCentres[1], param.subBandCentres[2],
                        param.subBandCentres[3]};
    std::vector<float> silence(100);
    EXPECT_FALSE(classifier.musicCheckByFft(silence.data(), 100, 63998, centres));
    EXPECT_FALSE(classifier.musicCheckByFft(silence.data(), 0, 0, centres));
    EXPECT_FALSE(classifier.musicCheckByFft(silence.data(), 100, 64, centres));
}

TEST_F(AudioClassifierRoutines, PreRetReferOfLength0ReturnsTheVerdictAndStoresNothing) {
    EXPECT_TRUE(classifier.preRetRefer(true, 0));
    EXPECT_FALSE(classifier.preRetRefer(false, 0));
    EXPECT_EQ(classifier.mVoteCount, 0);
    EXPECT_TRUE(classifier.mVotes.empty());
}

TEST_F(AudioClassifierRoutines, TheFirst30VerdictsAreReturnedAndThe31stIsAVote) {
    for (int i = 0; i < 30; ++i) {
        EXPECT_EQ(classifier.preRetRefer(i != 0, 30), i != 0) << i;
    }
    EXPECT_TRUE(classifier.preRetRefer(false, 30));
    EXPECT_TRUE(classifier.preRetRefer(false, 30));
}

TEST_F(AudioClassifierRoutines, AHistoryOf30OnesWithCurrent0YieldsMusic) {
    for (int i = 0; i < 30; ++i) {
        classifier.preRetRefer(true, 30);
    }
    EXPECT_TRUE(classifier.preRetRefer(false, 30));
    EXPECT_EQ(classifier.mVotes.back(), 0);
    EXPECT_EQ(classifier.mVotes.size(), 30U);
}

TEST_F(AudioClassifierRoutines, AnotherLengthRestartsTheHistory) {
    for (int i = 0; i < 40; ++i) {
        classifier.preRetRefer(true, 30);
    }
    EXPECT_FALSE(classifier.preRetRefer(false, 5));
    EXPECT_EQ(classifier.mVoteCount, 1);
    EXPECT_EQ(classifier.mVotes, std::vector<unsigned char>(5, 0));
}

TEST_F(AudioClassifierRoutines,
       SixtyFiveThousandRandomVerdictsFollowThePlainModelPastTheCount60000) {
    std::mt19937 random = SeededRandom();
    std::vector<bool> past;
    int limited = 0;
    for (int i = 0; i < 65600; ++i) {
        const bool repeat = i > 0 && RandomInt(random, 0, 3) > 0;
        const bool current = repeat ? past.back() : RandomInt(random, 0, 1) == 1;
        ASSERT_EQ(classifier.preRetRefer(current, 30), PlainVote(past, current, 30)) << i;
        ASSERT_LE(classifier.mVoteCount, 60000);
        limited += classifier.mVoteCount == 31 ? 1 : 0;
        past.push_back(current);
    }
    EXPECT_EQ(limited, 2);  // after 31 verdicts, and after 60001
}

}  // namespace
