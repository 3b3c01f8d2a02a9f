#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "classifier/audio_classifier.h"
#include "classifier/plain_model.h"
#include "common/result_code.h"
#include "support/seed.h"

namespace {

/// A stream of noise and tones, loud and quiet, so that both verdicts occur.
class Source {
public:
    Source(std::mt19937& random, SampleFmt format, double scale)
        : mRandom(random), mFormat(format), mScale(scale) {}

    /// Samples at an odd address, followed by a few bytes of an incomplete one.
    std::vector<unsigned char> Block(std::size_t samples, std::size_t stray) {
        const std::size_t width = mFormat == SAMPLE_FMT_S16 ? 2 : 4;
        std::vector<unsigned char> block(1 + samples * width + stray, 0x5A);
        for (std::size_t i = 0; i < samples; ++i) {
            const double sample = Next();
            if (mFormat == SAMPLE_FMT_S16) {
                const auto integer = static_cast<std::int16_t>(sample * 32767.0);
                std::memcpy(&block[1 + 2 * i], &integer, 2);
            } else {
                const auto real = static_cast<float>(sample * mScale);
                std::memcpy(&block[1 + 4 * i], &real, 4);
            }
        }
        return block;
    }

private:
    double Next() {
        if (mLeft-- == 0) {
            mLeft = RandomInt(mRandom, 100, 150'000);
            mTone = RandomInt(mRandom, 0, 3) == 0 ? 0.0 : RandomInt(mRandom, 1, 3100) / 1000.0;
            mLoudness = std::pow(0.1, RandomInt(mRandom, 0, 2));
        }
        mPhase += mTone;
        const double noise = RandomInt(mRandom, -1000, 1000) / 1000.0;
        return mLoudness * (mTone > 0.0 ? 0.9 * std::sin(mPhase) + 0.05 * noise : 0.9 * noise);
    }

    std::mt19937& mRandom;
    SampleFmt mFormat;
    double mScale;
    int mLeft = 0;
    double mTone = 0.0;
    double mLoudness = 1.0;
    double mPhase = 0.0;
};

struct Stream {
    unsigned short channels;
    int rate;
    SampleFmt format;
    double scale = 1.0;  ///< of floats
};

void ExpectTheVerdictsOfThePlainModel(const Stream& stream, int analyses, int longestBlock) {
    SCOPED_TRACE(testing::Message() << stream.channels << " channels, " << stream.rate
                                    << " Hz, format " << stream.format);
    std::mt19937 random = SeededRandom();
    Source source(random, stream.format, stream.scale);
    AudioClassifier classifier;
    ASSERT_EQ(classifier.Init(stream.channels, stream.rate, stream.format), RESULT_OK);
    PlainClassifier plain(stream.channels, stream.rate, stream.format);
    while (static_cast<int>(plain.past.size()) < analyses) {
        const int frames = RandomInt(random, 1, longestBlock);
        const std::size_t samples = static_cast<std::size_t>(frames) * stream.channels;
        std::vector<unsigned char> block =
            source.Block(samples, static_cast<std::size_t>(RandomInt(random, 0, 1)));
        const std::vector<unsigned char> before = block;
        const bool expected = plain.Check(block.data() + 1, block.size() - 1);
        ASSERT_EQ(classifier.MusicCheck(block.data() + 1, static_cast<unsigned>(block.size() - 1)),
                  expected);
        ASSERT_EQ(block, before);
        ASSERT_EQ(classifier.GetRealTimeCheckRet(), plain.raw);
        ASSERT_EQ(classifier.mGathered, plain.gathered);
    }
    EXPECT_EQ(classifier.mHistory, plain.history);
    EXPECT_EQ(classifier.mVoteCount, analyses);
}

TEST(AudioClassifierModel, ThreeAnalysesAtFiveRatesInMonoAndStereoAndThreeChannels16BitAndFloat) {
    for (const int rate : {8000, 16000, 32000, 44100, 48000}) {
        for (const unsigned short channels : std::vector<unsigned short>{1, 2, 3}) {
            ExpectTheVerdictsOfThePlainModel({channels, rate, SAMPLE_FMT_S16}, 3, rate / 8);
            ExpectTheVerdictsOfThePlainModel({channels, rate, SAMPLE_FMT_FLT}, 3, rate / 8);
            ExpectTheVerdictsOfThePlainModel({channels, rate, SAMPLE_FMT_FLT, 40000.0}, 3,
                                             rate / 8);
        }
    }
}

TEST(AudioClassifierModel, FortyAnalysesOf16BitMonoAt32000HzGetTheSameVotes) {
    ExpectTheVerdictsOfThePlainModel({1, 32000, SAMPLE_FMT_S16}, 40, 6000);
}

TEST(AudioClassifierModel, FortyAnalysesOf16BitStereoAt48000HzGetTheSameVotes) {
    ExpectTheVerdictsOfThePlainModel({2, 48000, SAMPLE_FMT_S16}, 40, 8000);
}

TEST(AudioClassifierModel, BlocksOf0_9SecondsGatherMoreThan65535SamplesAt44100Hz) {
    for (const SampleFmt format : {SAMPLE_FMT_S16, SAMPLE_FMT_FLT}) {
        std::mt19937 random = SeededRandom();
        Source source(random, format, 40000.0);
        AudioClassifier classifier;
        ASSERT_EQ(classifier.Init(1, 44100, format), RESULT_OK);
        PlainClassifier plain(1, 44100, format);
        for (unsigned i = 1; i <= 9; ++i) {
            std::vector<unsigned char> block = source.Block(39690, 0);
            const bool expected = plain.Check(block.data() + 1, block.size() - 1);
            ASSERT_EQ(
                classifier.MusicCheck(block.data() + 1, static_cast<unsigned>(block.size() - 1)),
                expected);
            ASSERT_EQ(classifier.mGathered, i % 3 * 39690);
        }
        EXPECT_EQ(classifier.mHistory, plain.history);
        EXPECT_EQ(classifier.mVoteCount, 3);
    }
}

TEST(AudioClassifierModel, OneSecondBlocksAt48000HzGather96000SamplesOfWhich95998AreTransformed) {
    ExpectTheVerdictsOfThePlainModel({1, 48000, SAMPLE_FMT_S16}, 3, 48000);
}

TEST(AudioClassifierModel, BlocksOfUpToTenSecondsAt8000HzAreCutToTheBuffers) {
    for (const unsigned short channels : std::vector<unsigned short>{1, 2}) {
        ExpectTheVerdictsOfThePlainModel({channels, 8000, SAMPLE_FMT_S16}, 3, 80'000);
    }
}

/// Random bytes as the history, without passing the suppressor.
TEST(AudioClassifierModel, OneHundredRandomHistoriesGetTheRawVerdictOfThePlainModel) {
    std::mt19937 random = SeededRandom();
    int music = 0;
    for (std::size_t run = 0; run < 100; ++run) {
        const int rate = std::vector<int>{8000, 32000, 44100, 48000}[run % 4];
        const SampleFmt format = run % 3 == 0 ? SAMPLE_FMT_FLT : SAMPLE_FMT_S16;
        AudioClassifier classifier;
        ASSERT_EQ(classifier.Init(1, rate, format), RESULT_OK);
        PlainClassifier plain(1, rate, format);
        const algoParam param = classifier.getAlgoParam(static_cast<unsigned short>(rate));
        const int full = static_cast<int>(60 * param.hop + param.frameLength);
        plain.gathered = static_cast<std::size_t>(
            RandomInt(random, full, std::min(4 * rate, run % 5 == 0 ? 4 * rate : 60000)));
        Source source(random, run % 2 == 0 ? format : SAMPLE_FMT_S16, 1.0);
        const std::vector<unsigned char> samples = source.Block(plain.gathered, 0);
        std::copy(samples.begin() + 1, samples.end(), plain.history.begin());
        classifier.mHistory = plain.history;
        classifier.mGathered = static_cast<unsigned>(plain.gathered);
        const bool expected = plain.Analyse();
        music += expected ? 1 : 0;
        unsigned char byte = 0;  // triggers the analysis without adding a sample
        ASSERT_EQ(classifier.MusicCheck(&byte, 1), expected) << "run " << run;
        ASSERT_EQ(classifier.GetRealTimeCheckRet(), expected);
        ASSERT_EQ(classifier.mGathered, 0U);
    }
    EXPECT_GT(music, 0);  // both verdicts occurred
    EXPECT_LT(music, 100);
}

}  // namespace
