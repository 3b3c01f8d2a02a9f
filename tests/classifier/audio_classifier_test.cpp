#include "classifier/audio_classifier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

#include "classifier/plain_model.h"
#include "common/result_code.h"
#include "common/sample_format.h"
#include "support/bytes.h"
#include "support/seed.h"

using namespace audio_filter::internal;

namespace {

using Block = std::vector<unsigned char>;

constexpr unsigned kFullAt32000 = 31744;

template <typename Sample>
Block Bytes(const std::vector<Sample>& samples) {
    const auto* first = reinterpret_cast<const unsigned char*>(samples.data());
    return Block(first, first + samples.size() * sizeof(Sample));
}

Block Noise16(std::mt19937& random, std::size_t samples) {
    std::vector<std::int16_t> noise(samples);
    for (std::int16_t& sample : noise) {
        sample = static_cast<std::int16_t>(RandomInt(random, -20000, 20000));
    }
    return Bytes(noise);
}

bool Check(AudioClassifier& classifier, Block block) {
    return classifier.MusicCheck(block.data(), static_cast<unsigned>(block.size()));
}

/// A classifier for 16-bit mono at 32000 Hz that has gathered `samples` of them.
struct Gathered : AudioClassifier {
    explicit Gathered(const std::vector<std::int16_t>& samples) {
        EXPECT_EQ(Init(1, 32000, SAMPLE_FMT_S16), RESULT_OK);
        Hold(samples);
    }

    void Hold(const std::vector<std::int16_t>& samples) {
        std::memcpy(mHistory.data(), samples.data(), samples.size() * 2);
        mGathered = static_cast<unsigned>(samples.size());
    }

    bool Analyse() { return Check(*this, Block(2)); }
};

/// Loud for the first third, then silent, like the bursts and pauses of speech.
std::vector<std::int16_t> Bursts() {
    std::vector<std::int16_t> samples(kFullAt32000);
    for (std::size_t n = 0; n < samples.size() / 3; ++n) {
        samples[n] = n % 2 == 0 ? 20000 : -20000;
    }
    return samples;
}

/// A steady tone that is detected as music; not every tone is.
std::vector<std::int16_t> SteadyMusic() {
    for (int attempt = 0; attempt < 200; ++attempt) {
        const double step = 0.3 + 0.01 * attempt;
        std::vector<std::int16_t> samples(kFullAt32000);
        for (std::size_t n = 0; n < samples.size(); ++n) {
            samples[n] =
                static_cast<std::int16_t>(12000.0 * std::sin(step * static_cast<double>(n)));
        }
        PlainClassifier plain(1, 32000, SAMPLE_FMT_S16);
        std::memcpy(plain.history.data(), samples.data(), samples.size() * 2);
        plain.gathered = samples.size();
        if (plain.Analyse()) {
            return samples;
        }
    }
    ADD_FAILURE() << "no steady tone is music";
    return {};
}

TEST(AudioClassifier, StartsNotInitialisedAndReturnsFalse) {
    AudioClassifier classifier;
    EXPECT_FALSE(classifier.IsInited());
    EXPECT_FALSE(classifier.GetRealTimeCheckRet());
    classifier.mSmoothedResult = true;
    EXPECT_FALSE(Check(classifier, Block(640)));
    EXPECT_FALSE(classifier.MusicCheck(nullptr, 0));
}

TEST(AudioClassifier, InitTakes16BitAndFloatAndAllocatesFourSecondsOfZeros) {
    for (const SampleFmt format :
         {SAMPLE_FMT_S16, SAMPLE_FMT_FLT, SAMPLE_FMT_S16P, SAMPLE_FMT_FLTP}) {
        const std::size_t width = IsFloat(format) ? 4 : 2;
        for (const unsigned short channels : std::vector<unsigned short>{1, 2, 3}) {
            AudioClassifier classifier;
            EXPECT_EQ(classifier.Init(channels, 8000, format), RESULT_OK);
            EXPECT_TRUE(classifier.IsInited());
            EXPECT_EQ(classifier.mHistory, Block(width * 32000));
            EXPECT_EQ(classifier.mDenoised.size(),
                      width * (32000 * std::min<std::size_t>(channels, 2) + 320));
            EXPECT_EQ(classifier.mLeft.size(), channels == 2 ? width * 64000 : 0);
            EXPECT_EQ(classifier.mRight.size(), classifier.mLeft.size());
        }
    }
}

TEST(AudioClassifier, TheSuppressorRunsAt32000HzMonoLevel3WhateverTheRate) {
    AudioClassifier classifier;
    classifier.Init(2, 48000, SAMPLE_FMT_FLT);
    EXPECT_EQ(classifier.mDenoise.mSampleRate, 32000);
    EXPECT_EQ(classifier.mDenoise.mChannels, 1);
    EXPECT_EQ(classifier.mDenoise.mFmt, SAMPLE_FMT_FLT);
}

TEST(AudioClassifier, ARefusedInitReturns3AndLeavesItNotInitialisedWithItsGatheredSamples) {
    for (const int format : {-1, 0, 2, 4, 5, 7, 9, 10}) {
        AudioClassifier classifier;
        classifier.Init(1, 32000, SAMPLE_FMT_S16);
        Check(classifier, Block(640));
        EXPECT_EQ(classifier.Init(1, 32000, static_cast<SampleFmt>(format)), RESULT_INVALID)
            << format;
        EXPECT_FALSE(classifier.IsInited());
        classifier.mSmoothedResult = true;
        EXPECT_FALSE(Check(classifier, Block(640)));
        EXPECT_EQ(classifier.mGathered, 320U);
        EXPECT_EQ(classifier.Init(1, 32000, SAMPLE_FMT_S16), RESULT_OK);
        EXPECT_TRUE(Check(classifier, Block(640)));
    }
}

TEST(AudioClassifier, FourSecondsBeyond2To31BytesAreBadAllocAndLeaveItNotInitialised) {
    AudioClassifier classifier;
    classifier.Init(1, 32000, SAMPLE_FMT_S16);
    EXPECT_EQ(classifier.Init(65535, 48000, SAMPLE_FMT_FLT), RESULT_OK)
        << "only two channels are buffered";
    EXPECT_THROW(classifier.Init(2, INT32_MAX / 15, SAMPLE_FMT_S16), std::bad_alloc);
    EXPECT_FALSE(classifier.IsInited());
    EXPECT_THROW(classifier.Init(1, INT32_MAX, SAMPLE_FMT_S16), std::bad_alloc);
    EXPECT_THROW(classifier.Init(0, INT32_MAX / 15, SAMPLE_FMT_FLT), std::bad_alloc);
    EXPECT_FALSE(Check(classifier, Block(640)));
    EXPECT_EQ(classifier.Init(1, 32000, SAMPLE_FMT_S16), RESULT_OK);
    EXPECT_FALSE(Check(classifier, Block(640)));
}

TEST(AudioClassifier, ASecondInitKeepsTheSampleCountAndTheVotesAndZeroesTheBuffers) {
    Gathered classifier(std::vector<std::int16_t>(1000, 77));
    classifier.preRetRefer(true, 30);
    classifier.mSmoothedResult = true;
    EXPECT_EQ(classifier.Init(1, 32000, SAMPLE_FMT_S16), RESULT_OK);
    EXPECT_EQ(classifier.mGathered, 1000U);
    EXPECT_EQ(classifier.mVoteCount, 1);
    EXPECT_EQ(classifier.mHistory, Block(256000));
    EXPECT_TRUE(Check(classifier, Block(2)));
}

TEST(AudioClassifier, ASecondInitAtALowerRateCutsTheSampleCountToTheHistory) {
    AudioClassifier classifier;
    classifier.Init(1, 48000, SAMPLE_FMT_S16);
    Check(classifier, Block(2 * 47000));
    EXPECT_EQ(classifier.mGathered, 47000U);
    classifier.Init(1, 8000, SAMPLE_FMT_S16);
    EXPECT_LE(classifier.mGathered, 32000U);
    Check(classifier, Block(640));  // analyses
    EXPECT_EQ(classifier.mGathered, 0U);
    classifier.Init(1, 100, SAMPLE_FMT_FLT);
    Check(classifier, Block(4 * 1000));
    classifier.Init(1, 50, SAMPLE_FMT_S16);
    EXPECT_EQ(classifier.mGathered, 200U);
    Check(classifier, Block(2 * 100));
    EXPECT_EQ(classifier.mGathered, 200U);
}

TEST(AudioClassifier, AStreamAt16000HzGathers31744SamplesAndAnalysesWithTheNextBlock) {
    for (const auto& [rate, full] : {std::pair{16000, 31744U},
                                     {32000, 31744U},
                                     {8000, 31744U},
                                     {44100, 43772U},
                                     {48000, 47616U}}) {
        AudioClassifier classifier;
        classifier.Init(1, rate, SAMPLE_FMT_S16);
        Check(classifier, Block(2 * 20000));
        Check(classifier, Block(2 * (full - 20001)));
        EXPECT_EQ(classifier.mGathered, full - 1) << rate;
        Check(classifier, Block(2));
        EXPECT_EQ(classifier.mGathered, full);
        EXPECT_EQ(classifier.mVoteCount, 0);
        Check(classifier, Block(2));
        EXPECT_EQ(classifier.mGathered, 0U);
        EXPECT_EQ(classifier.mVoteCount, 1);
    }
}

TEST(AudioClassifier, TheBlockThatTriggersTheAnalysisIsDroppedAndTheNextStartsFrom0) {
    Gathered classifier(std::vector<std::int16_t>(kFullAt32000, 3));
    const Block history = classifier.mHistory;
    std::mt19937 random = SeededRandom();
    Check(classifier, Noise16(random, 640));
    EXPECT_EQ(classifier.mHistory, history);
    EXPECT_EQ(classifier.mGathered, 0U);
    Check(classifier, Noise16(random, 320));
    EXPECT_EQ(classifier.mGathered, 320U);
    EXPECT_EQ(std::memcmp(classifier.mHistory.data(), classifier.mDenoised.data(), 640), 0);
}

TEST(AudioClassifier, SteadyTonesAreMusicAndBurstsAreNot) {
    Gathered classifier(SteadyMusic());
    EXPECT_TRUE(classifier.Analyse());
    EXPECT_TRUE(classifier.GetRealTimeCheckRet());
    classifier.Hold(Bursts());
    EXPECT_FALSE(classifier.Analyse());
    EXPECT_FALSE(classifier.GetRealTimeCheckRet());
}

TEST(AudioClassifier, For30AnalysesTheResultIsTheRawOneAndFromThe31stAVote) {
    Gathered classifier(SteadyMusic());
    const std::vector<std::int16_t> music = SteadyMusic();
    for (int analysis = 1; analysis <= 30; ++analysis) {
        const bool speech = analysis == 2;
        classifier.Hold(speech ? Bursts() : music);
        EXPECT_EQ(classifier.Analyse(), !speech) << analysis;
        EXPECT_EQ(classifier.GetRealTimeCheckRet(), !speech);
    }
    classifier.Hold(Bursts());
    EXPECT_TRUE(classifier.Analyse());
    EXPECT_FALSE(classifier.GetRealTimeCheckRet());
    EXPECT_TRUE(Check(classifier, Block(640)));  // until the next analysis
}

TEST(AudioClassifier, NullDataWithALengthDoesNothingEvenWhenFull) {
    Gathered classifier(std::vector<std::int16_t>(kFullAt32000, 3));
    for (const bool verdict : {false, true}) {
        classifier.mSmoothedResult = verdict;
        EXPECT_EQ(classifier.MusicCheck(nullptr, 640), verdict);
    }
    EXPECT_EQ(classifier.mGathered, kFullAt32000);
    EXPECT_EQ(classifier.mVoteCount, 0);
}

TEST(AudioClassifier, Length0AppendsNothingUntil31744SamplesAreGathered) {
    Gathered classifier(std::vector<std::int16_t>(kFullAt32000 - 1, 3));
    unsigned char byte = 0;
    EXPECT_FALSE(classifier.MusicCheck(&byte, 0));
    EXPECT_FALSE(classifier.MusicCheck(nullptr, 0));
    EXPECT_EQ(classifier.mGathered, kFullAt32000 - 1);
    EXPECT_EQ(classifier.mVoteCount, 0);
}

TEST(AudioClassifier, Length0WithAFullHistoryAnalysesAsABlockDoes) {
    unsigned char byte = 0;
    for (unsigned char* data : {&byte, static_cast<unsigned char*>(nullptr)}) {
        Gathered classifier(Bursts());
        Gathered other(Bursts());
        EXPECT_EQ(classifier.MusicCheck(data, 0), Check(other, Block(640)));
        EXPECT_EQ(classifier.GetRealTimeCheckRet(), other.GetRealTimeCheckRet());
        EXPECT_EQ(classifier.mGathered, 0U);
        EXPECT_EQ(classifier.mVoteCount, 1);
    }
}

TEST(AudioClassifier, ANewOneHasFormat0) {
    EXPECT_EQ(AudioClassifier().mFormat, 0);
}

TEST(AudioClassifier, WithoutChannelsNothingIsGathered) {
    AudioClassifier classifier;
    EXPECT_EQ(classifier.Init(0, 32000, SAMPLE_FMT_S16), RESULT_OK);
    for (int i = 0; i < 200; ++i) {
        EXPECT_FALSE(Check(classifier, Block(640)));
    }
    EXPECT_EQ(classifier.mGathered, 0U);
}

TEST(AudioClassifier, AtARateBelow1NothingIsGathered) {
    for (const int rate : {0, -1, -32000, INT32_MIN}) {
        for (const SampleFmt format : {SAMPLE_FMT_FLT, SAMPLE_FMT_S16}) {
            AudioClassifier classifier;
            EXPECT_EQ(classifier.Init(2, rate, format), RESULT_OK);
            EXPECT_FALSE(Check(classifier, Block(6400)));
            EXPECT_EQ(classifier.mGathered, 0U);
        }
    }
}

TEST(AudioClassifier, ARateOf109636HzTruncatesTo44100In16Bits) {
    AudioClassifier classifier;
    classifier.Init(1, 65536 + 44100, SAMPLE_FMT_S16);
    Check(classifier, Block(2 * 43771));
    Check(classifier, Block(2));
    Check(classifier, Block(2));
    EXPECT_EQ(classifier.mGathered, 0U);
    EXPECT_EQ(classifier.mWindow.size(), 1412U);
}

TEST(AudioClassifier, ABlockIsCutToTheRoomOfTheFourSecondHistory) {
    for (const unsigned short channels : std::vector<unsigned short>{1, 2, 3}) {
        AudioClassifier classifier;
        classifier.Init(channels, 7000, SAMPLE_FMT_S16);  // can never be full
        Check(classifier, Block(2U * channels * 20000));
        EXPECT_EQ(classifier.mGathered, 20000U);
        Check(classifier, Block(2U * channels * 200000));
        EXPECT_EQ(classifier.mGathered, 28000U);
        Check(classifier, Block(2U * channels * 20000));
        EXPECT_EQ(classifier.mGathered, 28000U);
    }
}

TEST(AudioClassifier, AStereoBlockOfFiveSecondsIsSuppressedWholeWhenItIsNotGathered) {
    std::mt19937 random = SeededRandom();
    AudioClassifier classifier;
    classifier.Init(2, 8000, SAMPLE_FMT_S16);
    classifier.mGathered = 32000;
    PlainClassifier plain(2, 8000, SAMPLE_FMT_S16);
    plain.gathered = 32000;
    const Block block = Noise16(random, 2 * 40000);
    Check(classifier, block);
    plain.Check(block.data(), block.size());
    EXPECT_EQ(std::memcmp(classifier.mDenoised.data(), plain.denoised.data(), 2 * 40000), 0);
}

TEST(AudioClassifier, MoreThanTwoChannelsKeepAnalysingTheLastOutputOfTheSuppressor) {
    std::mt19937 random = SeededRandom();
    AudioClassifier classifier;
    classifier.Init(3, 32000, SAMPLE_FMT_S16);
    const Block stale = Noise16(random, 12000);
    std::copy(stale.begin(), stale.end(), classifier.mDenoised.begin());
    Check(classifier, Block(6 * 12000));
    Check(classifier, Noise16(random, 3 * 12000));
    Check(classifier, Noise16(random, 3 * 12000));
    EXPECT_EQ(classifier.mGathered, 36000U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(std::memcmp(&classifier.mHistory[i * 24000], stale.data(), 24000), 0);
    }
    EXPECT_EQ(std::memcmp(classifier.mDenoised.data(), stale.data(), 24000), 0);
    Check(classifier, Block(6));
    EXPECT_EQ(classifier.mVoteCount, 1);
}

TEST(AudioClassifier, AShortBlockAppendsTheLastOutputOfTheSuppressor) {
    std::mt19937 random = SeededRandom();
    AudioClassifier classifier;
    classifier.Init(1, 32000, SAMPLE_FMT_S16);
    Check(classifier, Noise16(random, 640));
    const Block denoised = classifier.mDenoised;
    Check(classifier, Noise16(random, 100));  // fills no suppressor block
    EXPECT_EQ(classifier.mGathered, 740U);
    EXPECT_EQ(classifier.mDenoised, denoised);
    EXPECT_EQ(std::memcmp(&classifier.mHistory[1280], denoised.data(), 200), 0);
}

TEST(AudioClassifier, FloatsAreStoredAs16BitNumbersTruncatedTowardsZeroAndWrapped) {
    AudioClassifier classifier;
    classifier.Init(3, 32000,
                    SAMPLE_FMT_FLT);  // three channels leave the suppressed block as set here
    const std::vector<float> samples = {
        0.9F, -0.9F,    1.5F,      -1.5F, 32767.9F, 32768.0F,      -32769.0F,    65537.0F,
        NAN,  INFINITY, -INFINITY, 3e9F,  -3e9F,    2147483520.0F, 2147483648.0F};
    const std::vector<std::int16_t> stored = {0, 0, 1, -1, 32767, -32768, 32767, 1,
                                              0, 0, 0, 0,  0,     -128,   0};
    std::memcpy(classifier.mDenoised.data(), samples.data(), samples.size() * 4);
    Check(classifier, Block(12 * samples.size()));
    std::vector<std::int16_t> history(samples.size());
    std::memcpy(history.data(), classifier.mHistory.data(), history.size() * 2);
    EXPECT_EQ(history, stored);
}

TEST(AudioClassifier, StreamsWithNaNAndInfinityFollowThePlainModel) {
    for (const float odd : {NAN, INFINITY, -INFINITY, std::numeric_limits<float>::max()}) {
        AudioClassifier classifier;
        classifier.Init(1, 32000, SAMPLE_FMT_FLT);
        PlainClassifier plain(1, 32000, SAMPLE_FMT_FLT);
        std::vector<float> samples(8000, 0.25F);
        samples[17] = odd;
        for (int i = 0; i < 6; ++i) {
            EXPECT_EQ(Check(classifier, Bytes(samples)),
                      plain.Check(Bytes(samples).data(), 4 * samples.size()));
        }
        EXPECT_EQ(classifier.mVoteCount, 1);
    }
}

TEST(AudioClassifier, PlanarStreamsAreAnalysedAsSilenceWhichIsNotMusic) {
    std::mt19937 random = SeededRandom();
    for (const SampleFmt format : {SAMPLE_FMT_S16P, SAMPLE_FMT_FLTP}) {
        AudioClassifier classifier;
        classifier.Init(1, 32000, format);
        for (int i = 0; i < 5; ++i) {
            EXPECT_FALSE(Check(classifier, Noise16(random, 20000)));
        }
        EXPECT_GE(classifier.mVoteCount, 1);
        EXPECT_EQ(classifier.mHistory, Block(classifier.mHistory.size()));
    }
}

TEST(AudioClassifier, At48000HzTheSignalBufferHoldsTheLargest16BitCountOfSamples) {
    AudioClassifier classifier;
    classifier.Init(1, 48000, SAMPLE_FMT_S16);
    EXPECT_EQ(classifier.mSignal.size(), 65535U);
    classifier.mGathered = 65535;
    EXPECT_EQ(classifier.EmphasisedHistory(0.97F).size(), 65535U);
}

TEST(AudioClassifier, Of79380GatheredSamplesOnly13844EnterTheAnalysis) {
    std::vector<std::int16_t> samples(79380, 1000);
    AudioClassifier classifier;
    classifier.Init(1, 44100, SAMPLE_FMT_S16);
    std::memcpy(classifier.mHistory.data(), samples.data(), samples.size() * 2);
    classifier.mGathered = 79380;
    const std::span<const float> signal = classifier.EmphasisedHistory(0.97F);
    ASSERT_EQ(signal.size(), 13844U);
    EXPECT_EQ(signal[0], 1000.0F);
    EXPECT_EQ(signal[13843], 1000.0F - 0.97F * 1000.0F);
}

}  // namespace
