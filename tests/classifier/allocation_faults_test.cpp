#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "classifier/audio_classifier.h"
#include "common/result_code.h"
#include "support/bytes.h"
#include "support/fail_each.h"
#include "support/signals.h"

namespace {

struct ClassifierStream {
    unsigned short channels;
    int rate;
    SampleFmt format;
};

const std::vector<ClassifierStream> kClassifierStreams = {
    {1, 32000, SAMPLE_FMT_S16}, {2, 32000, SAMPLE_FMT_FLT},  {3, 32000, SAMPLE_FMT_S16},
    {1, 44100, SAMPLE_FMT_FLT}, {2, 44100, SAMPLE_FMT_S16},  {2, 48000, SAMPLE_FMT_FLT},
    {1, 8000, SAMPLE_FMT_S16},  {1, 32000, SAMPLE_FMT_S16P}, {1, 32000, SAMPLE_FMT_DBL},
};

using Bytes = std::vector<unsigned char>;

std::size_t BlockBytes(const ClassifierStream& stream) {
    const std::size_t width = stream.format == SAMPLE_FMT_FLT ? 4 : 2;
    return static_cast<std::size_t>(stream.rate / 100) * stream.channels * width;
}

constexpr std::size_t kMoreThanAnAnalysis = 120;  ///< blocks of 10 ms
constexpr std::size_t kPartOfAHistory = 20;

Bytes Speech(const ClassifierStream& stream, std::size_t blocks) {
    std::mt19937 random(1);
    const auto samples = static_cast<std::size_t>(stream.rate / 100) * stream.channels;
    const std::vector<float> floats = NoisySpeech(random, blocks * samples, stream.rate);
    const std::vector<short> shorts = As<short>(floats);
    const char* bytes = stream.format == SAMPLE_FMT_FLT ? BytesOf(floats) : BytesOf(shorts);
    return {bytes, bytes + blocks * BlockBytes(stream)};
}

std::vector<bool> RunStream(AudioClassifier& classifier, const ClassifierStream& stream,
                            Bytes speech) {
    const std::size_t block = BlockBytes(stream);
    std::vector<bool> results;
    for (std::size_t at = 0; at < speech.size(); at += block) {
        results.push_back(
            classifier.MusicCheck(speech.data() + at, static_cast<unsigned int>(block)));
        results.push_back(classifier.GetRealTimeCheckRet());
    }
    return results;
}

/// The state of a classifier after a stream.
struct State {
    Bytes history;
    Bytes votes;
    std::vector<bool> results;
    bool operator==(const State&) const = default;
};

State StateAfter(AudioClassifier& classifier, const ClassifierStream& stream, const Bytes& speech) {
    std::vector<bool> results = RunStream(classifier, stream, speech);
    return {classifier.mHistory, classifier.mVotes, std::move(results)};
}

/// @param before an earlier stream of the classifier; null for none
/// @param blocks length of the comparison
int FailClassifierInit(const ClassifierStream& stream, const ClassifierStream* before,
                       std::size_t blocks) {
    const auto make = [before] {
        auto classifier = std::make_unique<AudioClassifier>();
        if (before != nullptr) {
            classifier->Init(before->channels, before->rate, before->format);
            classifier->MusicCheck(classifier->mHistory.data(), 6400);
        }
        return classifier;
    };
    const auto init = [&stream](AudioClassifier& classifier) {
        return classifier.Init(stream.channels, stream.rate, stream.format);
    };
    const std::unique_ptr<AudioClassifier> undisturbed = make();
    const int accepted = init(*undisturbed);
    const Bytes speech = Speech(stream, blocks);
    const State expected = StateAfter(*undisturbed, stream, speech);
    return FailEach(make, init, [&](AudioClassifier& classifier, int code) {
        EXPECT_TRUE(code == kThrew || code == accepted);
        EXPECT_EQ(classifier.IsInited(), code == 0);
        if (code != 0) {
            unsigned char block[640] = {};
            const unsigned int gathered = classifier.mGathered;
            EXPECT_FALSE(classifier.MusicCheck(block, 640));
            EXPECT_EQ(classifier.mGathered, gathered);
        }
        EXPECT_EQ(init(classifier), accepted);
        EXPECT_TRUE(StateAfter(classifier, stream, speech) == expected);
    });
}

TEST(AllocationFaults, AClassifierWhoseInitThrewIsNotInitialisedAndTheNextInitGivesTheSameResults) {
    int failures = 0;
    for (const ClassifierStream& stream : kClassifierStreams) {
        failures += FailClassifierInit(stream, nullptr, kPartOfAHistory);
    }
    failures += FailClassifierInit(kClassifierStreams[0], nullptr, kMoreThanAnAnalysis);
    failures +=
        FailClassifierInit(kClassifierStreams[0], &kClassifierStreams[5], kMoreThanAnAnalysis);
    failures += FailClassifierInit(kClassifierStreams[4], &kClassifierStreams[0], kPartOfAHistory);
    failures += FailClassifierInit(kClassifierStreams[4], &kClassifierStreams[4], kPartOfAHistory);
    Report("AudioClassifier::Init", failures);
}

/// The routines that return arrays throw without a leak.
TEST(AllocationFaults, TheRoutinesOfTheAnalysisThrowWithoutALeak) {
    const auto make = [] {
        auto classifier = std::make_unique<AudioClassifier>();
        classifier->Init(1, 32000, SAMPLE_FMT_S16);
        return classifier;
    };
    const auto steps = [](AudioClassifier& classifier) {
        unsigned char bytes[2048] = {};
        const std::unique_ptr<float[]> emphasised(classifier.emphasis(bytes, 1024, 0.97F));
        const std::unique_ptr<float[]> window(classifier.hammingWindow(1024, 1.0F));
        const std::unique_ptr<float[]> magnitudes(classifier.fft(emphasised.get(), 1024, 62));
        const std::unique_ptr<float[]> spectrum(new float[32000]());
        const std::unique_ptr<float[]> rates(classifier.subBandEnergyRate(spectrum.get()));
        float** segments = classifier.frameSeg(emphasised.get(), 1024, 256, 128);
        const auto count = classifier.mFrameCount;
        int code = 0;
        try {
            classifier.lowEnergyFrameRate(segments, 256, count, 0.5F);
        } catch (const std::bad_alloc&) {
            code = kThrew;
        }
        classifier.array2dDelete(reinterpret_cast<void**>(segments), count);
        return code;
    };
    const auto check = [&steps](AudioClassifier& classifier, int) {
        EXPECT_EQ(steps(classifier), 0);
        EXPECT_TRUE(classifier.IsInited());
    };
    Report("routines of AudioClassifier", FailEach(make, steps, check));
}

TEST(AudioClassifierAllocationFaults, ASecondInitHasFreedTheBufferThatItCannotAllocate) {
    int failures = 0;
    for (std::size_t n = 1;; ++n) {
        AudioClassifier classifier;
        ASSERT_EQ(classifier.Init(2, 48000, SAMPLE_FMT_FLT), RESULT_OK);
        ASSERT_FALSE(classifier.mMagnitudes.empty());
        bool threw = false;
        {
            Allocations allocations;
            allocations.Fail(n, true);
            try {
                classifier.Init(2, 44100, SAMPLE_FMT_FLT);
            } catch (const std::bad_alloc&) {
                threw = true;
            }
            allocations.FailNoMore();
        }
        if (!threw) {
            break;
        }
        EXPECT_FALSE(classifier.IsInited());
        if (classifier.mDenoise.IsInited()) {  // then a buffer of the detector's own has failed
            const bool freed = classifier.mDenoised.empty() || classifier.mHistory.empty() ||
                               classifier.mLeft.empty() || classifier.mRight.empty() ||
                               classifier.mWindow.empty() || classifier.mSignal.empty() ||
                               classifier.mEnergies.empty() || classifier.mMagnitudes.empty() ||
                               classifier.mTransform == nullptr;
            EXPECT_TRUE(freed) << "allocation " << n;
            ++failures;
        }
    }
    EXPECT_GE(failures, 9);
}

}  // namespace
