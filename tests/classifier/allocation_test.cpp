#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "classifier/audio_classifier.h"
#include "common/result_code.h"
#include "support/allocations.h"
#include "support/seed.h"

namespace {

struct Stream {
    unsigned short channels;
    int rate;
    SampleFmt format;
};

const std::
    vector<Stream>
        kStreams =
            {
                {1, 32000, SAMPLE_FMT_S16},  {2, 32000, SAMPLE_FMT_FLT},
                {3, 32000, SAMPLE_FMT_S16},  {1, 44100, SAMPLE_FMT_FLT},
                {2, 44100, SAMPLE_FMT_S16},  {1, 48000, SAMPLE_FMT_S16},
                {2, 48000, SAMPLE_FMT_FLT},  {1, 8000, SAMPLE_FMT_S16},
                {1, 192000, SAMPLE_FMT_FLT}, {1, 32000, SAMPLE_FMT_S16P},
                {1, 7936, SAMPLE_FMT_S16},  // its history holds exactly one analysis
};

unsigned Full(AudioClassifier& classifier) {
    const algoParam param =
        classifier.getAlgoParam(static_cast<unsigned short>(classifier.mSampleRate));
    return 60 * param.hop + param.frameLength;
}

/// Noise as bytes of any format.
std::vector<unsigned char> Noise(std::mt19937& random, std::size_t bytes) {
    std::vector<unsigned char> noise(bytes);
    for (std::size_t i = 0; i < bytes; ++i) {
        noise[i] = static_cast<unsigned char>(RandomInt(random, 0, i % 4 == 3 ? 0x46 : 0xFF));
    }
    return noise;
}

/// Allocations of blocks of 10 ms, and one of four seconds, until `analyses` analyses are done.
std::size_t AllocationsOf(AudioClassifier& classifier, const Stream& stream, int analyses) {
    std::mt19937 random = SeededRandom();
    const std::size_t width = stream.format == SAMPLE_FMT_FLT ? 4 : 2;
    const std::size_t frames = static_cast<std::size_t>(stream.rate);
    std::vector<unsigned char> block = Noise(random, frames * 4 * stream.channels * width);
    const auto bytes = static_cast<unsigned>(frames / 100 * stream.channels * width);
    Allocations allocations;
    for (int done = 0; done < analyses; ++done) {
        classifier.MusicCheck(block.data(), bytes);
        while (classifier.mGathered != 0) {
            const bool longest = done == 0 && classifier.mGathered > frames / 4;
            classifier.MusicCheck(block.data(),
                                  longest ? static_cast<unsigned>(block.size()) : bytes);
        }
    }
    return allocations.Stop();
}

TEST(Allocations, OfOperatorNewAreCountedUntilStopped) {
    Allocations allocations;
    auto* number = new volatile int(1);
    delete number;
    const std::size_t counted = allocations.Stop();
    EXPECT_GE(counted, 1U);
    number = new volatile int(1);
    delete number;
    EXPECT_EQ(allocations.Stop(), counted);
}

TEST(MusicCheckAllocates, NothingInTwoAnalysesOf11Streams) {
    for (const Stream& stream : kStreams) {
        AudioClassifier classifier;
        ASSERT_EQ(classifier.Init(stream.channels, stream.rate, stream.format), RESULT_OK);
        EXPECT_EQ(AllocationsOf(classifier, stream, 2), 0U)
            << stream.channels << " channels, " << stream.rate << " Hz, format " << stream.format;
        EXPECT_EQ(classifier.mVoteCount, 2);
    }
}

TEST(MusicCheckAllocates, NothingWhenTheVoteStartsAfter30Analyses) {
    const Stream stream = {1, 32000, SAMPLE_FMT_S16};
    AudioClassifier classifier;
    classifier.Init(stream.channels, stream.rate, stream.format);
    EXPECT_EQ(AllocationsOf(classifier, stream, 33), 0U);
    EXPECT_EQ(classifier.mVoteCount, 33);
}

TEST(MusicCheckAllocates, NothingAfterASecondInitAtAnotherRate) {
    AudioClassifier classifier;
    for (const Stream& stream : kStreams) {
        ASSERT_EQ(classifier.Init(stream.channels, stream.rate, stream.format), RESULT_OK);
        classifier.mGathered = 0;
        EXPECT_EQ(AllocationsOf(classifier, stream, 1), 0U) << stream.rate;
    }
}

/// Steady tones pass the low-energy test, so the spectrum decides.
TEST(MusicCheckAllocates, NothingForSteadyTonesWhoseSpectrumDecides) {
    for (const int rate : {32000, 44100, 48000}) {
        AudioClassifier classifier;
        classifier.Init(1, rate, SAMPLE_FMT_S16);
        std::vector<std::int16_t> tone(Full(classifier));
        int music = 0;
        for (double step = 0.3; step < 2.3; step += 0.05) {
            for (std::size_t n = 0; n < tone.size(); ++n) {
                tone[n] =
                    static_cast<std::int16_t>(12000.0 * std::sin(step * static_cast<double>(n)));
            }
            std::memcpy(classifier.mHistory.data(), tone.data(), 2 * tone.size());
            classifier.mGathered = static_cast<unsigned>(tone.size());
            unsigned char block[640] = {};
            Allocations allocations;
            classifier.MusicCheck(block, 640);
            ASSERT_EQ(allocations.Stop(), 0U) << rate;
            music += classifier.GetRealTimeCheckRet() ? 1 : 0;
        }
        EXPECT_GT(music, 0) << rate;
    }
}

TEST(Array2dDelete, SkipsARowThatIsNullAndFreesTheOtherTwo) {
    AudioClassifier classifier;
    Allocations allocations;
    void** rows = classifier.array2dCreate(3, 5, 4);
    EXPECT_EQ(allocations.Held(), 4) << "three rows and their table";
    delete[] static_cast<char*>(rows[1]);
    rows[1] = nullptr;
    classifier.array2dDelete(rows, 3);
    EXPECT_EQ(allocations.Held(), 0);
}

}  // namespace
