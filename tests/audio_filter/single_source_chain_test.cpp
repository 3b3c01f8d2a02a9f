#include <cmath>

#include "common/result_code.h"
#include "filter_fixture.h"
#include "support/seed.h"
#include "support/signals.h"
#include "units/suppressor.h"

using namespace audio_filter::internal;

namespace {

std::string SingleDebug(int line, const std::string& text) {
    return "[DEBUG]MediaProcessLog:AudioFilter::SingleProcess:" + std::to_string(line) + ":" + text;
}

class SingleSourceChain : public FilterTest {
protected:
    std::vector<short> Noise(std::size_t samples) {
        return As<short>(NoisySpeech(random, samples, 32000.0));
    }

    /// Stereo with a reversed left channel.
    static std::vector<short> Opposed(std::size_t frames) {
        std::vector<short> samples;
        for (std::size_t i = 0; i < frames; ++i) {
            samples.insert(samples.end(), {-5000, 5000});
        }
        return samples;
    }

    /// The frames that a phase checker counted.
    std::uint64_t Counted(int checker) { return filter->mPhaseCheck[checker].mTotal; }

    /// Calls the chain directly.
    template <typename Sample>
    int Chain(std::vector<Sample>& samples, AVSourceType type) {
        out.assign(samples.size() * sizeof(Sample) + 5120, '\0');
        size = ByteCount(samples);
        const int code = filter->SingleProcess(BytesOf(samples), out.data(), size, type, param);
        out.resize(static_cast<std::size_t>(size));
        return code;
    }

    std::mt19937 random = SeededRandom();
};

TEST_F(SingleSourceChain, AMonoStreamIsNotPhaseChecked) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_PHASE_CHECK});
    std::vector<short> samples = Opposed(1000);
    EXPECT_EQ(Chain(samples, kMic), 0);
    EXPECT_EQ(Counted(0), 0U);
}

TEST_F(SingleSourceChain, AStereoBlockOf4000BytesIsCheckedWithCount2000) {
    Start(32000, 2, SAMPLE_FMT_S16, {AP_PHASE_CHECK});
    std::vector<short> samples = Opposed(1000);
    EXPECT_EQ(Chain(samples, kMic), 0);
    EXPECT_EQ(Counted(0), 1000U) << "frames of two";
    EXPECT_EQ(log.Lines()[1], SingleDebug(460, "[ASRC0]phase check processed(s16), in:" +
                                                   Number(samples.data()) + " , byteSize:4000"));
    Start(32000, 2, SAMPLE_FMT_FLT, {AP_PHASE_CHECK});
    std::vector<float> floats(1000, 0.5F);
    EXPECT_EQ(Chain(floats, kMic), 0);
    EXPECT_EQ(Counted(0), 500U);
    EXPECT_EQ(log.Lines()[1], SingleDebug(455, "[ASRC0]phase check process(float), in:" +
                                                   Number(floats.data()) + " , byteSize:4000"));
}

TEST_F(SingleSourceChain, Sources0And3ShareACheckerAnd1And2HaveTheirOwn) {
    Start(32000, 2, SAMPLE_FMT_S16, {AP_PHASE_CHECK});
    std::vector<short> samples = Opposed(100);
    const int checkers[] = {0, 1, 2, 0};
    for (int type = 0; type < 4; ++type) {
        const std::uint64_t before = Counted(checkers[type]);
        EXPECT_EQ(Chain(samples, static_cast<AVSourceType>(type)), 0);
        EXPECT_EQ(Counted(checkers[type]), before + 100) << type;
    }
    EXPECT_EQ(Counted(0), 200U);
    EXPECT_EQ(Chain(samples, kUnknownSource), 0);
    EXPECT_EQ(Chain(samples, static_cast<AVSourceType>(-1)), 0);
    EXPECT_EQ(Counted(0) + Counted(1) + Counted(2), 400U)
        << "source types outside 0..3 are not checked";
}

TEST_F(SingleSourceChain, AnOpposedSourceIsCorrectedInTheInputAndTheOutput) {
    Start(8000, 2, SAMPLE_FMT_S16, {AP_PHASE_CHECK});
    for (int i = 0; i < 2; ++i) {
        std::vector<short> samples = Opposed(4001);
        EXPECT_EQ(Chain(samples, kMic), 0);
        EXPECT_EQ(samples[0], i == 0 ? -5000 : 5000) << "from the second call on";
        EXPECT_EQ(Out<short>(), samples);
    }
}

TEST_F(SingleSourceChain, AnErrorOfThePhaseCheckIsLoggedAndTheCallGoesOn) {
    Start(32000, 2, SAMPLE_FMT_S16, {AP_PHASE_CHECK});
    std::vector<short> odd(321, 7);
    EXPECT_EQ(Chain(odd, kMic), 0);
    EXPECT_EQ(Out<short>(), odd);
    const Lines lines = log.Lines();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[2],
              "[ERROR]MediaProcessLog:AudioFilter::SingleProcess:465:Error in phase check!!!");
}

TEST_F(SingleSourceChain, FormatsOtherThan16BitAndFloatPassWithoutAPhaseCheck) {
    Start(32000, 2, SAMPLE_FMT_DBL, {AP_PHASE_CHECK});
    EXPECT_TRUE(filter->mSwitchState[AP_PHASE_CHECK]);
    std::vector<double> samples(640, -0.5);
    EXPECT_EQ(Chain(samples, kMic), 0);
    EXPECT_EQ(Out<double>(), samples);
    EXPECT_EQ(Counted(0), 0U);
    EXPECT_EQ(log.Lines().size(), 2U);
}

TEST_F(SingleSourceChain, Source1IsNeitherSuppressedNorDetectedAndGainRunsInTheInput) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_DENOISE, AP_GAIN});
    std::vector<short> samples = Noise(640);
    std::vector<short> gained = samples;
    AudioGain gain;
    gain.Init(SAMPLE_FMT_S16);
    gain.Process(BytesOf(gained), ByteCount(gained));
    EXPECT_EQ(Chain(samples, AV_SOURCE_1), 0);
    EXPECT_EQ(samples, gained);
    EXPECT_EQ(Out<short>(), gained);
    EXPECT_EQ(filter->mClassifier.mGathered, 0U);
    EXPECT_EQ(log.Lines(),
              (Lines{SingleDebug(436, "SingleProcess"),
                     SingleDebug(523, "[ASRC1]AGC process, in:" + Number(samples.data()) +
                                          ", byteSize:1280"),
                     SingleDebug(530, "copy to outbuf, outData:" + Number(out.data()) +
                                          ", out:" + Number(samples.data()) + ", byteSize:1280")}));
}

TEST_F(SingleSourceChain, AMicrophoneIsDetectedSuppressedGainedAndCopiedFromTheWorkBuffer) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_DENOISE, AP_GAIN});
    std::vector<short> samples = Noise(700);
    const std::vector<short> before = samples;
    AudioDenoise denoise;
    AudioGain gain;
    denoise.Init(32000, 1, SAMPLE_FMT_S16, 3);
    gain.Init(SAMPLE_FMT_S16);
    std::vector<short> expected(1000);
    int bytes = 1400;
    denoise.Process(BytesOf(samples), BytesOf(expected), bytes);
    gain.Process(BytesOf(expected), bytes);
    expected.resize(640);
    EXPECT_EQ(Chain(samples, kMic), 0);
    EXPECT_EQ(size, 1280) << "60 samples stay buffered";
    EXPECT_EQ(Out<short>(), expected);
    EXPECT_EQ(samples, before);
    EXPECT_EQ(filter->mClassifier.mGathered, 700U);
    const std::string work = Number(filter->mBuffer);
    EXPECT_EQ(log.Lines(),
              (Lines{SingleDebug(436, "SingleProcess"),
                     SingleDebug(491, "[ASRC0]denoise process, in:" + Number(samples.data()) +
                                          ", out:" + work + ", byteSize:1400"),
                     SingleDebug(523, "[ASRC0]AGC process, in:" + work + ", byteSize:1280"),
                     SingleDebug(530, "copy to outbuf, outData:" + Number(out.data()) +
                                          ", out:" + work + ", byteSize:1280")}));
}

TEST_F(SingleSourceChain, At48000HzAMicrophoneIsHandedBackWith9AndTheRequestedFormat) {
    Start(48000, 2, SAMPLE_FMT_FLT, {AP_DENOISE, AP_GAIN});
    std::vector<float> samples(960, 0.25F);
    EXPECT_EQ(Chain(samples, kMic), RESULT_NEEDS_RESAMPLING);
    EXPECT_EQ(Out<float>(), samples);
    EXPECT_EQ(samples[0], 0.25F) << "no gain";
    EXPECT_EQ(param.audioSampleRate, 32000);
    EXPECT_EQ(param.audioChannels, 2);
    EXPECT_EQ(param.audioSampleFmt, SAMPLE_FMT_FLT);
    EXPECT_EQ(log.Lines(), Lines{SingleDebug(436, "SingleProcess")});
}

TEST_F(SingleSourceChain, At48000HzWithoutSuppressionTheBlockIsProcessedDirectly) {
    Start(48000, 1, SAMPLE_FMT_S16, {AP_GAIN});
    std::vector<short> samples(480, 1000);
    EXPECT_EQ(Chain(samples, kMic), 0);
    EXPECT_GT(Out<short>()[0], 1000);
    EXPECT_EQ(param.audioSampleRate, -1);
}

TEST_F(SingleSourceChain, At44100HzTheLevelIs0DuringMusicAndTheHostsInTheCallThatEndsIt) {
    Start(44100, 2, SAMPLE_FMT_S16, {AP_DENOISE});
    ProcessParam level = {0.0F, 2};
    EXPECT_TRUE(filter->SetParameter(&level, AP_DENOISE));
    const auto applied = [&] { return filter->mDenoise.mNsL->mNs->mLevel; };
    std::vector<short> samples(882);
    filter->mClassifier.mSmoothedResult = true;
    EXPECT_EQ(Chain(samples, kMic), 0);
    EXPECT_TRUE(filter->mIsMusic);
    EXPECT_EQ(applied(), 0);
    filter->mClassifier.mSmoothedResult = false;
    EXPECT_EQ(Chain(samples, kMic), 0);
    EXPECT_FALSE(filter->mIsMusic);
    EXPECT_EQ(applied(), 2);
}

TEST_F(SingleSourceChain, ADetectorLeftFromAnEarlierStreamIsNotUsedAt16000Hz) {
    Start(44100, 1, SAMPLE_FMT_S16, {AP_DENOISE});
    Start(16000, 1, SAMPLE_FMT_S16, {AP_DENOISE});
    EXPECT_TRUE(filter->mClassifier.IsInited());
    filter->mClassifier.mSmoothedResult = true;
    std::vector<short> samples(320);
    EXPECT_EQ(Chain(samples, kMic), 0);
    EXPECT_FALSE(filter->mIsMusic);
    EXPECT_EQ(filter->mClassifier.mGathered, 0U);
}

TEST_F(SingleSourceChain,
       WithoutAnInitialisedSuppressorTheOutputIsTheOldWorkBufferOrWithGainTheInput) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_DENOISE});
    filter->mDenoise.Clear();
    for (int i = 0; i < 640; ++i) {
        filter->mBuffer[i] = 9;
    }
    std::vector<short> samples(320, 1000);
    EXPECT_EQ(Chain(samples, kMic), 0);
    EXPECT_EQ(out, std::vector<char>(640, 9));
    const Lines lines = log.Lines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[1],
              "[ERROR]MediaProcessLog:AudioFilter::SingleProcess:496:Audio denoisor is not "
              "inited!!!");

    filter->mSwitchState[AP_GAIN] = true;
    EXPECT_EQ(Chain(samples, kMic), 0);
    EXPECT_EQ(Out<short>(), samples);
    EXPECT_GT(samples[0], 1000);
}

TEST_F(SingleSourceChain, TheOutputIsTheSameAtAnyAddress) {
    for (const SampleFmt fmt : {SAMPLE_FMT_S16, SAMPLE_FMT_FLT}) {
        std::vector<std::vector<char>> results;
        for (const int shift : {0, 1}) {
            Start(32000, 2, fmt, {AP_DENOISE, AP_PHASE_CHECK, AP_GAIN});
            std::vector<float> floats(6400);
            std::mt19937 same(5);
            for (float& sample : floats) {
                sample = std::uniform_real_distribution<float>(-0.5F, 0.5F)(same);
            }
            const std::vector<short> shorts = As<short>(floats);
            const char* bytes = fmt == SAMPLE_FMT_S16 ? BytesOf(shorts) : BytesOf(floats);
            std::vector<char> in(12801);
            std::copy(bytes, bytes + 12800, in.begin() + shift);
            std::vector<char> room(16001);
            size = 12800;
            filter->Process(in.data() + shift, room.data() + shift, size, {kMic}, param, 0);
            results.emplace_back(room.begin() + shift, room.begin() + shift + size);
        }
        EXPECT_EQ(results[0], results[1]);
    }
}

TEST_F(SingleSourceChain, AStereoBlockOfOddBytesOutputsWhatTheWorkBufferHeldBefore) {
    Start(32000, 2, SAMPLE_FMT_S16, {AP_DENOISE});
    std::fill_n(filter->mBuffer, 101, 'w');
    std::vector<char> in(101, 'i');
    std::vector<char> result(101 + 1280, 'o');
    size = 101;
    EXPECT_EQ(filter->Process(in.data(), result.data(), size, {AV_SOURCE_MICROPHONE}, param, 0),
              RESULT_OK);
    EXPECT_EQ(size, 101);
    EXPECT_EQ(std::string(result.data(), 101), std::string(101, 'w'));
}

}  // namespace
