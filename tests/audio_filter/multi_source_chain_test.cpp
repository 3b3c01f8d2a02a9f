#include "common/result_code.h"
#include "filter_fixture.h"
#include "support/seed.h"
#include "support/signals.h"
#include "units/suppressor.h"

using namespace audio_filter::internal;

namespace {

std::string MultiDebug(int line, const std::string& text) {
    return "[DEBUG]MediaProcessLog:AudioFilter::MulitProcess:" + std::to_string(line) + ":" + text;
}

std::vector<AVSourceType> Types(std::initializer_list<int> types) {
    std::vector<AVSourceType> sources;
    for (const int type : types) {
        sources.push_back(static_cast<AVSourceType>(type));
    }
    return sources;
}

class MultiSourceChain : public FilterTest {
protected:
    std::vector<short> Noise(std::size_t samples) {
        return As<short>(NoisySpeech(random, samples, 32000.0));
    }

    static std::vector<short> Mixed(const std::vector<short>& samples, int sources) {
        AudioMixing mixer;
        mixer.Init(SAMPLE_FMT_S16);
        std::vector<short> mix(samples.size());
        int bytes = ByteCount(samples);
        mixer.Process(BytesOf(samples), BytesOf(mix), bytes, sources);
        mix.resize(static_cast<std::size_t>(bytes) / 2);
        return mix;
    }

    std::vector<std::uint64_t> Counted() {
        return {filter->mPhaseCheck[0].mTotal, filter->mPhaseCheck[1].mTotal,
                filter->mPhaseCheck[2].mTotal};
    }

    /// The frames that each checker counts for blocks of 100 frames.
    std::vector<std::uint64_t> CountedOf(std::initializer_list<int> types) {
        Start(32000, 2, SAMPLE_FMT_S16, {AP_PHASE_CHECK, AP_MIXING});
        std::vector<short> samples(200 * types.size(), 1000);
        EXPECT_EQ(Process(samples, Types(types)), RESULT_OK);
        return Counted();
    }

    std::mt19937 random = SeededRandom();
};

using Counts = std::vector<std::uint64_t>;

TEST_F(MultiSourceChain, Sources1_5_1AreAnErrorAnd0_2_0RepeatAndAnEmptyListDoesNot) {
    EXPECT_FALSE(filter->CheckSameSrcType(Types({1, 5, 1})));
    EXPECT_EQ(log.Lines(), Lines{"[ERROR]MediaProcessLog:AudioFilter::CheckSameSrcType:683:audio "
                                 "source check get a error type "});
    EXPECT_TRUE(filter->CheckSameSrcType(Types({0, 2, 0})));
    EXPECT_TRUE(filter->CheckSameSrcType(Types({1, 1, 5}))) << "before the unknown type";
    EXPECT_FALSE(filter->CheckSameSrcType({}));
    EXPECT_FALSE(filter->CheckSameSrcType(Types({3, 2, 1, 0})));
    EXPECT_EQ(log.Lines(), Lines{});
    EXPECT_FALSE(filter->CheckSameSrcType(Types({-1, 0, 0})));
    EXPECT_EQ(log.Lines().size(), 1U);
}

TEST_F(MultiSourceChain, PrivateSourceQueriesCountMicrophones) {
    EXPECT_TRUE(filter->HaveMicSrc(Types({0, 2, 0})));
    EXPECT_TRUE(filter->CheckMultiMicSrc(Types({0, 2, 0})));
    EXPECT_TRUE(filter->HaveMicSrc(Types({1, 0})));
    EXPECT_FALSE(filter->CheckMultiMicSrc(Types({1, 0})));
    EXPECT_FALSE(filter->HaveMicSrc(Types({1, 2, 3})));
    EXPECT_FALSE(filter->CheckMultiMicSrc(Types({1, 2, 3})));
}

TEST_F(MultiSourceChain, TwoMicrophonesAreMixedWithoutAPhaseCheck) {
    Start(32000, 2, SAMPLE_FMT_S16, {AP_PHASE_CHECK, AP_MIXING});
    std::vector<short> samples = Noise(800);
    const std::vector<short> expected = Mixed(samples, 2);
    EXPECT_EQ(Process(samples, {kMic, kMic}), RESULT_OK);
    EXPECT_EQ(Counted(), (Counts{0, 0, 0}));
    EXPECT_EQ(Out<short>(), expected);
}

TEST_F(MultiSourceChain, Source3UsesTheCheckerOfTheBlockBeforeItAndChecker1WhenItIsFirst) {
    EXPECT_EQ(CountedOf({3, 2}), (Counts{0, 100, 100}));
    EXPECT_EQ(CountedOf({2, 3}), (Counts{0, 0, 200}));
    EXPECT_EQ(CountedOf({0, 3}), (Counts{200, 0, 0}));
    EXPECT_EQ(CountedOf({0, 1, 2}), (Counts{100, 100, 100}));
}

TEST_F(MultiSourceChain, AnUnknownSourceTypeBeforeTheRepetitionDoesNotSkipTheChecks) {
    EXPECT_EQ(CountedOf({0, 5, 0}), (Counts{300, 0, 0}));
    EXPECT_EQ(CountedOf({0, 0, 5}), (Counts{0, 0, 0}));
}

TEST_F(MultiSourceChain, AMonoStreamOrASwitchedOffCheckIsNotPhaseChecked) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_PHASE_CHECK, AP_MIXING});
    std::vector<short> samples(400, 1000);
    EXPECT_EQ(Process(samples, Types({0, 1})), RESULT_OK);
    Start(32000, 2, SAMPLE_FMT_S16, {AP_MIXING});
    EXPECT_EQ(Process(samples, Types({0, 1})), RESULT_OK);
    EXPECT_EQ(Counted(), (Counts{0, 0, 0}));
}

TEST_F(MultiSourceChain, WithoutAMicrophoneTheMixIsCopiedWithoutDetectionAndSuppression) {
    Start(32000, 2, SAMPLE_FMT_S16, {AP_PHASE_CHECK, AP_DENOISE, AP_MIXING});
    std::vector<short> samples = Noise(800);
    const std::vector<short> expected = Mixed(samples, 2);
    size = 1600;
    std::vector<short> result(1600);
    EXPECT_EQ(filter->Process(BytesOf(samples), BytesOf(result), size, Types({1, 2}), param, 0),
              RESULT_OK);
    EXPECT_EQ(size, 800);
    result.resize(400);
    EXPECT_EQ(result, expected);
    EXPECT_EQ(filter->mClassifier.mGathered, 0U);
    const std::string in = Number(samples.data());
    const std::string second = Number(samples.data() + 400);
    const std::string work = Number(filter->mBuffer);
    EXPECT_EQ(log.Lines(),
              (Lines{MultiDebug(
                         561, "[ASRC1]multi phase check process(s16), in:" + in + ", byteSize:800"),
                     MultiDebug(561, "[ASRC2]multi phase check process(s16), in:" + second +
                                         ", byteSize:800"),
                     MultiDebug(586, "[ASRC mixed]mix process, in:" + in + ", out:" + work +
                                         ", size:1600, mSrcNum:2"),
                     MultiDebug(636, "copy to outbuf, outData:" + Number(result.data()) +
                                         ", out:" + work + ", byteSize:800")}));
}

TEST_F(MultiSourceChain, WithGainTheMixIsGainedInTheWorkBufferAndTheCopyLogsIn) {
    Start(32000, 2, SAMPLE_FMT_FLT, {AP_PHASE_CHECK, AP_GAIN, AP_MIXING});
    std::vector<float> samples(800, 0.1F);
    EXPECT_EQ(Process(samples, Types({1, 2})), RESULT_OK);
    const std::vector<float> result = Out<float>();
    ASSERT_EQ(result.size(), 400U);
    EXPECT_GT(result[0], 0.2F);
    const Lines lines = log.Lines();
    ASSERT_EQ(lines.size(), 5U);
    const std::string in = Number(samples.data());
    EXPECT_EQ(lines[0], MultiDebug(557, "[ASRC1]multi phase check process(float), in:" + in +
                                            ", byteSize:1600"));
    EXPECT_EQ(lines[3], MultiDebug(628, "[ASRC mixed]AGC processed, in:" + Number(filter->mBuffer) +
                                            ", byteSize:1600"));
    EXPECT_EQ(lines[4].find(MultiDebug(631, "copy to outbuf, outData:")), 0U);
    EXPECT_NE(lines[4].find(", in:" + Number(filter->mBuffer) + ", byteSize:1600"),
              std::string::npos);
}

TEST_F(MultiSourceChain, WithAMicrophoneTheSuppressorWritesTheOutputAndGainRunsThereWithoutACopy) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_DENOISE, AP_GAIN, AP_MIXING});
    std::vector<short> samples = Noise(1400);
    std::vector<short> mix = Mixed(samples, 2);
    std::vector<short> expected(1000);
    AudioDenoise denoise;
    AudioGain gain;
    denoise.Init(32000, 1, SAMPLE_FMT_S16, 3);
    gain.Init(SAMPLE_FMT_S16);
    int bytes = ByteCount(mix);
    denoise.Process(BytesOf(mix), BytesOf(expected), bytes);
    gain.Process(BytesOf(expected), bytes);
    expected.resize(640);
    size = 2800;
    std::vector<short> result(1400);
    EXPECT_EQ(filter->Process(BytesOf(samples), BytesOf(result), size, Types({0, 1}), param, 0),
              RESULT_OK);
    EXPECT_EQ(size, 1280);
    result.resize(640);
    EXPECT_EQ(result, expected);
    EXPECT_EQ(filter->mClassifier.mGathered, 700U) << "the mix enters music detection";
    const std::string work = Number(filter->mBuffer);
    const std::string target = Number(result.data());
    EXPECT_EQ(
        log.Lines(),
        (Lines{MultiDebug(586, "[ASRC mixed]mix process, in:" + Number(samples.data()) +
                                   ", out:" + work + ", size:2800, mSrcNum:2"),
               MultiDebug(619, "[ASRC mixed]denoise processed, in:" + work + ", out:" + target +
                                   ", byteSize:1400"),
               MultiDebug(628, "[ASRC mixed]AGC processed, in:" + target + ", byteSize:1280")}));
}

TEST_F(MultiSourceChain, At48000HzWithAMicrophoneTheMixIsHandedBackWith9) {
    Start(48000, 1, SAMPLE_FMT_S16, {AP_DENOISE, AP_GAIN, AP_MIXING});
    std::vector<short> samples = Noise(960);
    const std::vector<short> expected = Mixed(samples, 2);
    EXPECT_EQ(Process(samples, Types({1, 0})), RESULT_NEEDS_RESAMPLING);
    EXPECT_EQ(Out<short>(), expected);
    EXPECT_EQ(param.audioSampleRate, 32000);
    EXPECT_EQ(param.audioChannels, 1);
    EXPECT_EQ(param.audioSampleFmt, SAMPLE_FMT_S16);
}

TEST_F(MultiSourceChain, At44100HzTheLevelIs0WhileTheMixIsMusic) {
    Start(44100, 2, SAMPLE_FMT_S16, {AP_DENOISE, AP_MIXING});
    std::vector<short> samples(1764);
    filter->mClassifier.mSmoothedResult = true;
    EXPECT_EQ(Process(samples, Types({0, 1})), RESULT_OK);
    EXPECT_TRUE(filter->mIsMusic);
    EXPECT_EQ(filter->mDenoise.mNsL->mNs->mLevel, 0);
}

TEST_F(MultiSourceChain, WithoutAnInitialisedSuppressorTheResultIsTheUntouchedOutput) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_DENOISE, AP_MIXING});
    filter->mDenoise.Clear();
    std::vector<short> samples = Noise(640);
    std::vector<short> result(640, 77);
    size = 1280;
    EXPECT_EQ(filter->Process(BytesOf(samples), BytesOf(result), size, Types({0, 1}), param, 0),
              RESULT_OK);
    EXPECT_EQ(size, 640);
    EXPECT_EQ(result, std::vector<short>(640, 77));
}

TEST_F(MultiSourceChain, ARefusedMixOf17SourcesGainsAndCopiesNoMoreThanTheWorkBufferHolds) {
    Start(8000, 1, SAMPLE_FMT_S16, {AP_GAIN, AP_MIXING});
    std::vector<short> samples(17 * 8000, 100);
    EXPECT_EQ(Process(samples, std::vector<AVSourceType>(17)), RESULT_OK);
    EXPECT_EQ(static_cast<std::size_t>(size), filter->mBufferBytes);
    EXPECT_EQ(std::count(out.begin(), out.end(), '\0'), size) << "zeros of the work buffer";
}

}  // namespace
