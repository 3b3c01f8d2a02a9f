#include <gtest/gtest.h>

#include <cstdio>

#include "audio_filter/log_address.h"
#include "common/result_code.h"
#include "filter_fixture.h"
#include "support/seed.h"
#include "support/signals.h"

using namespace audio_filter::internal;

namespace {

template <typename... Args>
std::string Text(const char* format, Args... args) {
    char text[200];
    std::snprintf(text, sizeof(text), format, args...);
    return text;
}

class Entries : public FilterTest {
protected:
    static std::string Error(const char* function, int line, const std::string& text) {
        return Text("[ERROR]MediaProcessLog:AudioFilter::%s:%d:", function, line) + text;
    }

    int Resample(std::vector<short>& samples, std::vector<AVSourceType> sources = {kMic}) {
        std::vector<short> room(samples.size() + 960);
        size = ByteCount(samples);
        const int code =
            filter->ProcessResample(BytesOf(samples), BytesOf(room), size, sources, param, 0);
        out.assign(BytesOf(room), BytesOf(room) + size);
        return code;
    }

    int Sync(std::vector<short>& samples, std::vector<AVSourceType> sources) {
        std::vector<short> room(samples.size());
        size = ByteCount(samples);
        const int code = filter->SyncProcessDelay(BytesOf(samples), BytesOf(room), size, sources);
        out.assign(BytesOf(room), BytesOf(room) + size);
        return code;
    }

    std::vector<short> Noise(std::size_t samples) {
        return As<short>(NoisySpeech(random, samples, 32000.0));
    }

    std::mt19937 random = SeededRandom();
};

TEST_F(Entries, ASecondPerSourceIsAcceptedAndOneByteMoreReturns3) {
    Start(8000, 1, SAMPLE_FMT_S16);
    std::vector<char> bytes(16001);
    size = 16000;
    EXPECT_EQ(filter->Process(bytes.data(), bytes.data(), size, {kMic}, param, 0), RESULT_OK);
    size = 16001;
    EXPECT_EQ(filter->Process(bytes.data(), bytes.data(), size, {kMic}, param, 0), RESULT_INVALID);
    EXPECT_EQ(size, 16001);
    EXPECT_EQ(filter->SyncProcessDelay(bytes.data(), bytes.data(), size, {kMic}), RESULT_INVALID);
    bytes.resize(32002);
    size = 32000;
    EXPECT_EQ(filter->Process(bytes.data(), bytes.data(), size, {kMic, AV_SOURCE_1}, param, 0),
              RESULT_OK);
    size = 32002;
    EXPECT_EQ(filter->Process(bytes.data(), bytes.data(), size, {kMic, AV_SOURCE_1}, param, 0),
              RESULT_INVALID);
}

TEST_F(Entries, ThreeSourcesIn3001BytesReturn3AndIn3000GiveTheFirst1000) {
    Start(32000, 1, SAMPLE_FMT_S16);
    std::vector<char> bytes(3001, 1);
    std::vector<char> result(3001, 7);
    const std::vector<AVSourceType> sources = {kMic, AV_SOURCE_1, AV_SOURCE_2};
    size = 3001;
    EXPECT_EQ(filter->Process(bytes.data(), result.data(), size, sources, param, 0),
              RESULT_INVALID);
    EXPECT_EQ(log.Lines(), Lines{Error("Process", 280, "Input parameter is error!!!")});
    size = 3000;
    EXPECT_EQ(filter->Process(bytes.data(), result.data(), size, sources, param, 0), RESULT_OK);
    EXPECT_EQ(size, 1000);
    EXPECT_EQ(std::count(result.begin(), result.end(), 1), 1000);
    EXPECT_EQ(result[1000], 7);
}

TEST_F(Entries, OneSourceIsNotMixed) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_MIXING});
    std::vector<short> samples = Noise(320);
    const std::vector<short> before = samples;
    EXPECT_EQ(Process(samples, {kMic}), RESULT_OK);
    EXPECT_EQ(Out<short>(), before) << "the mixer would scale it by 7/8";
}

TEST_F(Entries, AnEmptySourceListReturns2AndStores0Sources) {
    Start(32000, 1, SAMPLE_FMT_S16);
    std::vector<short> samples(320);
    EXPECT_EQ(Process(samples, {kMic}), RESULT_OK);
    EXPECT_EQ(filter->mSrcNum, 1);
    EXPECT_EQ(Process(samples, {}), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(filter->mSrcNum, 0);
    EXPECT_EQ(Process(samples, {kMic}), RESULT_OK);
    EXPECT_EQ(Sync(samples, {}), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(filter->mSrcNum, 0);
}

TEST_F(Entries, BeforeInitANullOutputReturns2AndAValidCall4) {
    std::vector<short> samples(320);
    size = 640;
    EXPECT_EQ(filter->Process(BytesOf(samples), nullptr, size, {kMic}, param, 0),
              RESULT_BAD_ARGUMENT);
    EXPECT_EQ(filter->Process(nullptr, BytesOf(samples), size, {kMic}, param, 0),
              RESULT_BAD_ARGUMENT);
    const int address = LogAddress(samples.data());
    const char* text = "Input nothing!!!inData = %d, outData = %d, size = %d, mSrcNum = %d";
    EXPECT_EQ(log.Lines(), (Lines{Error("Process", 275, Text(text, address, 0, 640, 1)),
                                  Error("Process", 275, Text(text, 0, address, 640, 1))}));
    EXPECT_EQ(Process(samples, {kMic}), RESULT_NOT_INITIALISED);
    EXPECT_EQ(Resample(samples), RESULT_NOT_INITIALISED);
    EXPECT_EQ(Sync(samples, {kMic}), RESULT_NOT_INITIALISED);
    EXPECT_EQ(log.Lines(),
              (Lines{Error("Process", 285, "Have not been initialized yet!!!"),
                     Error("ProcessResample", 328, "Have not been initialized yet!!!"),
                     Error("SyncProcessDelay", 381, "Have not been initialized yet!!!")}));
}

TEST_F(Entries, EachEntryLogsItsRefusalsWithItsOwnTextsAndTags) {
    Start(32000, 1, SAMPLE_FMT_S16);
    std::vector<short> samples(3);
    const std::vector<AVSourceType> four = {kMic, AV_SOURCE_1, AV_SOURCE_2, AV_SOURCE_3};
    EXPECT_EQ(Process(samples, four), RESULT_INVALID);
    EXPECT_EQ(Resample(samples, four), RESULT_INVALID);
    EXPECT_EQ(Sync(samples, four), RESULT_INVALID);
    size = 0;
    char byte = 0;
    EXPECT_EQ(filter->ProcessResample(&byte, &byte, size, {kMic}, param, 0), RESULT_BAD_ARGUMENT);
    size = -1;
    EXPECT_EQ(filter->SyncProcessDelay(&byte, &byte, size, {kMic}), RESULT_BAD_ARGUMENT);
    const int address = LogAddress(&byte);
    EXPECT_EQ(log.Lines(),
              (Lines{Error("Process", 280, "Input parameter is error!!!"),
                     Error("ProcessResample", 324, "Input parameter is error!!!"),
                     Error("SyncProcessDelay", 376, "Input parameter is error!!!"),
                     Error("ProcessResample", 320, "Input nothing!!!"),
                     Error("SyncProcessDelay", 371,
                           Text("Input nothing!!!inData = %d, outData = %d, size = -1, mSrcNum = 1",
                                address, address))}));
}

TEST_F(Entries, ARefusedCallChangesNeitherSizeNorOutputNorParameters) {
    Start(48000, 1, SAMPLE_FMT_S16, {AP_DENOISE});
    std::vector<char> bytes(100, 3);
    size = 99;
    EXPECT_EQ(filter->Process(bytes.data(), bytes.data(), size, {kMic, kMic}, param, 0),
              RESULT_INVALID);
    EXPECT_EQ(size, 99);
    EXPECT_EQ(param.audioSampleRate, -1);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 3), 100);
}

TEST_F(Entries, AfterClearTheSizeIsStillBoundedByTheEarlierStream) {
    Start(8000, 1, SAMPLE_FMT_S16);
    filter->Clear();
    std::vector<short> fits(8000);
    EXPECT_EQ(Process(fits, {kMic}), RESULT_NOT_INITIALISED);
    std::vector<short> tooLong(8001);
    EXPECT_EQ(Process(tooLong, {kMic}), RESULT_INVALID);
    EXPECT_EQ(Process(tooLong, {kMic, kMic}), RESULT_NOT_INITIALISED);
}

TEST_F(Entries, WithSourcesWhoseSizeBoundWrapsAroundTheWrappedBoundHolds) {
    Start(48000, 2, SAMPLE_FMT_S16);
    std::vector<short> samples(24000);
    EXPECT_EQ(Process(samples, std::vector<AVSourceType>(12000)), RESULT_INVALID)
        << "2304000000 wraps around";
    EXPECT_EQ(Process(samples, std::vector<AVSourceType>(24000)), RESULT_OK)
        << "4608000000 wraps around too";
    EXPECT_EQ(size, 2);
}

TEST_F(Entries, AnInPlaceCallIsRecorded) {
    Start(32000, 1, SAMPLE_FMT_S16);
    std::vector<short> samples(640);
    size = 640;
    filter->Process(BytesOf(samples), BytesOf(samples), size, {kMic}, param, 0);
    EXPECT_TRUE(filter->mInPlace);
    size = 640;
    filter->Process(BytesOf(samples), BytesOf(samples) + 640, size, {kMic}, param, 0);
    EXPECT_FALSE(filter->mInPlace);
}

TEST_F(Entries, After9A48000HzStereoBufferResampledTo32000HzIsSuppressedGainedAndReturns12) {
    Start(48000, 2, SAMPLE_FMT_S16, {AP_DENOISE, AP_GAIN});
    std::vector<short> block = Noise(960);
    EXPECT_EQ(Process(block, {kMic}), RESULT_NEEDS_RESAMPLING);
    EXPECT_EQ(param.audioSampleRate, 32000);
    EXPECT_EQ(param.audioChannels, 2);
    EXPECT_EQ(param.audioSampleFmt, SAMPLE_FMT_S16);
    log.Lines();

    AudioDenoise denoise;
    AudioGain gain;
    denoise.Init(32000, 2, SAMPLE_FMT_S16, 3);
    gain.Init(SAMPLE_FMT_S16);
    for (int i = 0; i < 20; ++i) {
        std::vector<short> resampled = Noise(700);
        std::vector<short> expected(resampled.size() + 640);
        int bytes = ByteCount(resampled);
        denoise.Process(BytesOf(resampled), BytesOf(expected), bytes);
        gain.Process(BytesOf(expected), bytes);
        expected.resize(static_cast<std::size_t>(bytes) / 2);
        EXPECT_EQ(Resample(resampled), RESULT_RESAMPLED);
        EXPECT_EQ(Out<short>(), expected);
    }
    const Lines lines = log.Lines();
    EXPECT_EQ(lines[0],
              "[DEBUG]MediaProcessLog:AudioFilter::ProcessResample:342:"
              "[ASRC resample]denoise processed");
    EXPECT_EQ(lines[1],
              "[DEBUG]MediaProcessLog:AudioFilter::ProcessResample:354:"
              "[ASRC resample]AGC processed");
    EXPECT_EQ(lines.size(), 40U);
}

TEST_F(Entries, ABufferOfAnotherFormatThanRequestedIsCopiedAndReturns12) {
    Start(48000, 2, SAMPLE_FMT_S16, {AP_DENOISE});
    std::vector<short> block = Noise(960);
    EXPECT_EQ(Process(block, {kMic}), RESULT_NEEDS_RESAMPLING);
    const AVParam requested = param;
    for (std::int32_t AVParam::*field :
         {&AVParam::audioSampleRate, &AVParam::audioChannels, &AVParam::audioSampleFmt}) {
        param = requested;
        param.*field += 1;
        EXPECT_EQ(Resample(block), RESULT_RESAMPLED);
        EXPECT_EQ(Out<short>(), block);
    }
    param = requested;
    EXPECT_EQ(Resample(block), RESULT_RESAMPLED);
    EXPECT_NE(Out<short>(), block);
}

TEST_F(Entries, AfterAProcessOfTwoSourcesNothingIsSuppressed) {
    Start(48000, 1, SAMPLE_FMT_S16, {AP_DENOISE, AP_MIXING});
    std::vector<short> block = Noise(960);
    EXPECT_EQ(Process(block, {kMic, AV_SOURCE_1}), RESULT_NEEDS_RESAMPLING);
    std::vector<short> resampled = Noise(640);
    EXPECT_EQ(Resample(resampled), RESULT_RESAMPLED);
    EXPECT_EQ(Out<short>(), resampled);
    EXPECT_EQ(filter->mSrcNum, 2) << "ProcessResample does not change it";
}

TEST_F(Entries, AResampledBufferLongerThanOneSecondReturns3ForAnyNumberOfSources) {
    Start(8000, 1, SAMPLE_FMT_S16);
    std::vector<short> samples(8002);
    EXPECT_EQ(Resample(samples, {kMic, AV_SOURCE_1}), RESULT_INVALID);
    samples.resize(8000);
    EXPECT_EQ(Resample(samples, {kMic, AV_SOURCE_1}), RESULT_RESAMPLED);
    EXPECT_EQ(size, 8000) << "half of the buffer";
}

TEST_F(Entries, Code12OfTheSuppressorCountsAsSuccessAndGainStillRuns) {
    Start(48000, 3, SAMPLE_FMT_S16, {AP_DENOISE, AP_GAIN});
    std::vector<short> block(960, 1000);
    EXPECT_EQ(Process(block, {kMic}), RESULT_NEEDS_RESAMPLING);
    EXPECT_EQ(Resample(block), RESULT_RESAMPLED);
    AudioGain gain;
    gain.Init(SAMPLE_FMT_S16);
    gain.Process(BytesOf(block), ByteCount(block));
    EXPECT_EQ(Out<short>(), block);
    EXPECT_GT(block[0], 1000);
}

TEST_F(Entries, OtherCodesOfTheSuppressorAreLoggedAndReturnedAndSkipTheGain) {
    Start(48000, 2, SAMPLE_FMT_S16, {AP_DENOISE, AP_GAIN});
    std::vector<short> block = Noise(960);
    EXPECT_EQ(Process(block, {kMic}), RESULT_NEEDS_RESAMPLING);
    log.Lines();
    std::vector<char> odd(101, 1);
    size = 101;
    EXPECT_EQ(filter->ProcessResample(odd.data(), out.data(), size, {kMic}, param, 0),
              RESULT_INVALID);
    EXPECT_EQ(log.Lines(), (Lines{"[DEBUG]MediaProcessLog:AudioFilter::ProcessResample:342:"
                                  "[ASRC resample]denoise processed",
                                  Error("ProcessResample", 345, "Error in audio denoise!!!")}));
}

TEST_F(Entries, SyncProcessDelayOfOneSourceIsACopyWithMixingOnAndOff) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_MIXING, AP_GAIN, AP_DENOISE});
    std::vector<short> samples = Noise(320);
    EXPECT_EQ(Sync(samples, {kMic}), RESULT_OK);
    EXPECT_EQ(Out<short>(), samples);
    EXPECT_EQ(log.Lines(), Lines{});
}

TEST_F(Entries, SyncProcessDelayOfTwoSourcesMixesOrGivesTheFirstHalf) {
    Start(32000, 1, SAMPLE_FMT_S16);
    std::vector<short> samples = Noise(640);
    EXPECT_EQ(Sync(samples, {kMic, AV_SOURCE_1}), RESULT_OK);
    EXPECT_EQ(Out<short>(), std::vector<short>(samples.begin(), samples.begin() + 320));

    ProcessSwitchMap mixing = {{AP_MIXING, true}};
    filter->SetMethod(&mixing);
    log.Lines();
    EXPECT_EQ(Sync(samples, {kMic, AV_SOURCE_1}), RESULT_OK);
    AudioMixing mixer;
    mixer.Init(SAMPLE_FMT_S16);
    std::vector<short> mixed(640);
    int bytes = 1280;
    mixer.Process(BytesOf(samples), BytesOf(mixed), bytes, 2);
    mixed.resize(320);
    EXPECT_EQ(Out<short>(), mixed);
    EXPECT_EQ(log.Lines(), Lines{"[DEBUG]MediaProcessLog:AudioFilter::SyncProcessDelay:396:"
                                 "[ASRC delayed]Mix processed"});
}

TEST_F(Entries, SyncProcessDelayLogsEvenWhenTheMixerRefuses) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_MIXING});
    std::vector<short> samples(17);
    EXPECT_EQ(Sync(samples, std::vector<AVSourceType>(17)), RESULT_BAD_ARGUMENT)
        << "more than 16 sources";
    EXPECT_EQ(log.Lines(), Lines{"[DEBUG]MediaProcessLog:AudioFilter::SyncProcessDelay:396:"
                                 "[ASRC delayed]Mix processed"});
}

TEST_F(Entries, ARefusedSyncProcessDelayOfTwoSourcesAlsoKeepsTheNextBufferFromSuppression) {
    Start(48000, 1, SAMPLE_FMT_S16, {AP_DENOISE});
    std::vector<short> block = Noise(960);
    EXPECT_EQ(Process(block, {kMic}), RESULT_NEEDS_RESAMPLING);
    std::vector<short> odd(1, 0);
    EXPECT_EQ(Sync(odd, {kMic, AV_SOURCE_1, AV_SOURCE_2}), RESULT_INVALID);
    std::vector<short> resampled = Noise(640);
    EXPECT_EQ(Resample(resampled), RESULT_RESAMPLED);
    EXPECT_EQ(Out<short>(), resampled);
}

TEST_F(Entries, ABufferThatTheSuppressorRefusesReportsTheSizeOfOneOfItsTwoSources) {
    Start(48000, 2, SAMPLE_FMT_S16, {AP_DENOISE});
    std::vector<short> block = Noise(960);
    EXPECT_EQ(Process(block, {kMic}), RESULT_NEEDS_RESAMPLING);
    std::vector<char> bytes(202, 1);
    size = 202;
    EXPECT_EQ(
        filter->ProcessResample(bytes.data(), out.data(), size, {kMic, AV_SOURCE_1}, param, 0),
        RESULT_INVALID);
    EXPECT_EQ(size, 101);
}

TEST_F(Entries, ADelayedMixOfFractionalSamplesReportsTheBytesOfWholeSamples) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_MIXING});
    std::vector<char> bytes(14, 1);
    size = 14;
    EXPECT_EQ(filter->SyncProcessDelay(bytes.data(), bytes.data(), size, {kMic, AV_SOURCE_1}),
              RESULT_INVALID)
        << "3.5 samples per source";
    EXPECT_EQ(size, 14);
    size = 6;
    EXPECT_EQ(filter->SyncProcessDelay(bytes.data(), bytes.data(), size, {kMic, AV_SOURCE_1}),
              RESULT_INVALID);
    EXPECT_EQ(size, 6);
    Start(32000, 1, SAMPLE_FMT_FLT, {AP_MIXING});
    size = 14;
    EXPECT_EQ(filter->SyncProcessDelay(bytes.data(), bytes.data(), size, {kMic, AV_SOURCE_1}),
              RESULT_INVALID);
    EXPECT_EQ(size, 12) << "3 float samples";
}

TEST_F(Entries, SettersACopyingSyncProcessDelayAndABareProcessResampleLogNothing) {
    Start(48000, 1, SAMPLE_FMT_S16, {AP_MIXING});
    ProcessParam parameters;
    filter->SetParameter(&parameters, AP_GAIN);
    filter->SetParameter(&parameters, AP_MIXING);
    filter->SetParameter(nullptr, AP_GAIN);
    filter->SetListener(this);
    filter->SetLogger(nullptr);
    std::vector<short> samples = Noise(320);
    EXPECT_EQ(Sync(samples, {kMic}), RESULT_OK);
    EXPECT_EQ(Resample(samples), RESULT_RESAMPLED);
    EXPECT_EQ(log.Lines(), Lines{});
}

}  // namespace
