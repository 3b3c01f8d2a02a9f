#include <limits>
#include <new>

#include "common/result_code.h"
#include "filter_fixture.h"

namespace {

class Lifecycle : public FilterTest {};

TEST_F(Lifecycle, ANewFilterHoldsFifteenKindsAllOffAndNothingElse) {
    EXPECT_FALSE(filter->mInited);
    EXPECT_EQ(filter->mSwitchState.size(), 15U);
    for (const auto& [kind, on] : filter->mSwitchState) {
        EXPECT_FALSE(on) << kind;
    }
    EXPECT_EQ(filter->mBuffer, nullptr);
    EXPECT_EQ(filter->mBuffer2, nullptr);
    EXPECT_EQ(filter->mSrcNum, 0);
    EXPECT_FALSE(filter->mIsMusic);
    EXPECT_EQ(log.Lines(), Lines{});
}

TEST_F(Lifecycle, RatesOf32000To44100HaveMusicDetectionAndOthersBut8000And16000NeedResampling) {
    const struct {
        int rate;
        bool music;
        bool resample;
    } expected[] = {{7999, false, true},  {8000, false, false},  {8001, false, true},
                    {11025, false, true}, {16000, false, false}, {16001, false, true},
                    {22050, false, true}, {24000, false, true},  {31999, false, true},
                    {32000, true, false}, {32001, true, false},  {44100, true, false},
                    {44101, false, true}, {48000, false, true},  {96000, false, true}};
    for (const auto& [rate, music, resample] : expected) {
        EXPECT_EQ(Start(rate, 1, SAMPLE_FMT_S16), RESULT_OK);
        EXPECT_EQ(filter->mMusicCheck, music) << rate;
        EXPECT_EQ(filter->mNeedResample, resample) << rate;
    }
}

TEST_F(Lifecycle, TheProcessingRateIsTheLowestOf8000_16000_32000NotBelowTheRateUpTo32000) {
    const std::pair<int, int> expected[] = {{1, 8000},      {8000, 8000},   {8001, 16000},
                                            {16000, 16000}, {16001, 32000}, {48000, 32000}};
    for (const auto& [rate, processRate] : expected) {
        EXPECT_EQ(Start(rate, 1, SAMPLE_FMT_S16), RESULT_OK);
        EXPECT_EQ(filter->mProcessRate, processRate) << rate;
    }
}

TEST_F(Lifecycle, InitRefusesRate0Channels0AndFormatMinus1With3) {
    ProcessSwitchMap switches;
    EXPECT_EQ(filter->Init(0, 1, SAMPLE_FMT_S16, &switches), RESULT_INVALID);
    EXPECT_EQ(filter->Init(-8000, 1, SAMPLE_FMT_S16, &switches), RESULT_INVALID);
    EXPECT_EQ(filter->Init(32000, 0, SAMPLE_FMT_S16, &switches), RESULT_INVALID);
    EXPECT_EQ(filter->Init(32000, 1, SAMPLE_FMT_NONE, &switches), RESULT_INVALID);
    const std::string line =
        "[ERROR]MediaProcessLog:AudioFilter::Init:*:Input parameter is invalid!!!";
    EXPECT_EQ(log.Lines(), (Lines{line, line, line, line}));
    EXPECT_TRUE(switches.empty());
}

TEST_F(Lifecycle, ARefusedInitOnlyMakesTheFilterNotInitialised) {
    Start(32000, 2, SAMPLE_FMT_S16, {AP_GAIN});
    const char* buffer = filter->mBuffer;
    ProcessSwitchMap switches;
    EXPECT_EQ(filter->Init(0, 1, SAMPLE_FMT_FLT, &switches), RESULT_INVALID);
    EXPECT_FALSE(filter->mInited);
    EXPECT_EQ(filter->mBuffer, buffer);
    EXPECT_EQ(filter->mChannels, 2);
    EXPECT_TRUE(filter->mSwitchState[AP_GAIN]);
    EXPECT_TRUE(filter->mDenoise.IsInited());
}

TEST_F(Lifecycle, Format4IsAcceptedAndTheThreeUnitsThatRefuseItAreLogged) {
    ProcessSwitchMap switches = {{AP_DENOISE, true}, {AP_GAIN, true}, {AP_MIXING, true}};
    EXPECT_EQ(filter->Init(32000, 1, SAMPLE_FMT_DBL, &switches), RESULT_OK);
    const std::string init = "[ERROR]MediaProcessLog:AudioFilter::Init:*:";
    const std::string method = "[ERROR]MediaProcessLog:AudioFilter::SetMethod:*:try to open ";
    EXPECT_EQ(log.Lines(),
              (Lines{init + "audio denoisor init error, error code is 3",
                     init + "AGC init error, error code is 3",
                     init + "audio mixer init error, error code is -1",
                     method + "audio denoise, but it is not inited!!!",
                     method + "AGC, but it is not inited!!!",
                     method + "audio mixing, but it is not inited!!!",
                     "[INFO]MediaProcessLog:AudioFilter::SetMethod:*:switch state is set"}));
    EXPECT_TRUE(filter->mInited);
}

TEST_F(Lifecycle, ASecondInitReallocatesTheBuffers) {
    Start(48000, 2, SAMPLE_FMT_FLT);
    EXPECT_EQ(filter->mBufferBytes, (48000U + 320U) * 2 * 4);
    Start(8000, 1, SAMPLE_FMT_S16);
    EXPECT_EQ(filter->mBufferBytes, (8000U + 320U) * 2);
    EXPECT_NE(filter->mBuffer, filter->mBuffer2);
}

TEST_F(Lifecycle, BothWorkBuffersStartAsZeros) {
    Start(48000, 2, SAMPLE_FMT_S16);
    for (const char* buffer : {filter->mBuffer, filter->mBuffer2}) {
        EXPECT_EQ(std::count(buffer, buffer + filter->mBufferBytes, '\0'),
                  static_cast<std::ptrdiff_t>(filter->mBufferBytes));
    }
}

TEST_F(Lifecycle, At96000HzThePhaseCheckersAreNotInitialisedAndTheirKindStaysOff) {
    ProcessSwitchMap switches = {{AP_PHASE_CHECK, true}, {AP_GAIN, true}};
    EXPECT_EQ(filter->Init(96000, 2, SAMPLE_FMT_S16, &switches), RESULT_OK);
    for (PhaseCheck& check : filter->mPhaseCheck) {
        EXPECT_FALSE(check.IsInited());
    }
    EXPECT_FALSE(switches[AP_PHASE_CHECK]);
    EXPECT_TRUE(switches[AP_GAIN]);
}

TEST_F(Lifecycle, InitSetsLevel3AndResetsTheMusicVerdict) {
    Start(32000, 2, SAMPLE_FMT_S16);
    filter->mIsMusic = true;
    ProcessParam level = {0.0F, 1};
    filter->SetParameter(&level, AP_DENOISE);
    Start(32000, 2, SAMPLE_FMT_S16);
    EXPECT_FALSE(filter->mIsMusic);
    EXPECT_EQ(filter->mDenoiseLevel, 3);
}

TEST_F(Lifecycle, InitWithoutAMapLogsAWarningAndLeavesTheSwitches) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_GAIN});
    EXPECT_EQ(filter->Init(32000, 1, SAMPLE_FMT_S16, nullptr), RESULT_OK);
    EXPECT_EQ(log.Lines(),
              Lines{"[WARN]MediaProcessLog:AudioFilter::SetMethod:*:input switch state is null!"});
    EXPECT_TRUE(filter->mSwitchState[AP_GAIN]);
    EXPECT_EQ(events, Events{});
}

TEST_F(Lifecycle, ClearOnANewFilterLogsAndReturnsTrue) {
    EXPECT_TRUE(filter->Clear());
    EXPECT_EQ(log.Lines(),
              Lines{"[INFO]MediaProcessLog:AudioFilter::Clear:*:Audio filter is cleared"});
    EXPECT_EQ(filter->mSwitchState.size(), 15U);
}

TEST_F(Lifecycle, ClearReleasesBuffersAndUnitsButKeepsClassifierLevelAndStream) {
    Start(32000, 2, SAMPLE_FMT_S16, {AP_DENOISE, AP_PHASE_CHECK, AP_GAIN, AP_MIXING});
    filter->mIsMusic = true;
    EXPECT_TRUE(filter->Clear());
    EXPECT_FALSE(filter->mInited);
    EXPECT_EQ(filter->mBuffer, nullptr);
    EXPECT_EQ(filter->mBuffer2, nullptr);
    for (const auto& [kind, on] : filter->mSwitchState) {
        EXPECT_FALSE(on) << kind;
    }
    EXPECT_FALSE(filter->mPhaseCheck[2].IsInited());
    EXPECT_FALSE(filter->mDenoise.IsInited());
    EXPECT_FALSE(filter->mGain.IsInited());
    EXPECT_FALSE(filter->mMixing.IsInited());
    EXPECT_TRUE(filter->mClassifier.IsInited());
    EXPECT_EQ(filter->mListener, this);
    EXPECT_EQ(filter->mDenoiseLevel, 3);
    EXPECT_TRUE(filter->mIsMusic);
    EXPECT_EQ(filter->mSampleRate, 32000);
    EXPECT_EQ(events, Events{}) << "Clear sends no events";
}

TEST_F(Lifecycle, DestructionClearsAndDeletesNeitherListenerNorLogger) {
    MediaProcessLog logger;
    EXPECT_TRUE(filter->SetLogger(&logger));
    EXPECT_EQ(filter->mLogger, &logger);
    filter.reset();
    EXPECT_EQ(log.Lines(),
              Lines{"[INFO]MediaProcessLog:AudioFilter::Clear:*:Audio filter is cleared"});
}

TEST_F(Lifecycle, ASecondOfMoreThan2147483647BytesThrowsBadAllocAndLeavesNoBuffer) {
    constexpr int kMost = std::numeric_limits<int>::max();
    ProcessSwitchMap switches;
    Start(32000, 1, SAMPLE_FMT_S16);
    for (const auto& [rate, channels] :
         {std::pair(kMost, 1), std::pair(kMost, kMost), std::pair(65536, 16384)}) {
        EXPECT_THROW(filter->Init(rate, channels, SAMPLE_FMT_S16, &switches), std::bad_alloc);
        EXPECT_FALSE(filter->mInited);
        EXPECT_EQ(filter->mBuffer, nullptr);
        EXPECT_EQ(filter->mBuffer2, nullptr);
    }
    std::vector<short> samples(320);
    EXPECT_EQ(Process(samples, {AV_SOURCE_MICROPHONE}), RESULT_INVALID)
        << "the bound wraps around to below 0";
    EXPECT_TRUE(filter->Clear());
}

TEST_F(Lifecycle, AStreamOf9000ChannelsOrABillionHzAllocatesOneSecondPerBuffer) {
    EXPECT_EQ(Start(32000, 9000, SAMPLE_FMT_S16, {AP_GAIN}), RESULT_OK);
    EXPECT_TRUE(filter->mSwitchState[AP_GAIN]);
    EXPECT_EQ(Start(1, 1'000'000'000, SAMPLE_FMT_U8), RESULT_OK);
    EXPECT_EQ(filter->mBufferBytes, 1'000'000'000U);
    EXPECT_EQ(Start(1'100'000'000, 1, SAMPLE_FMT_U8), RESULT_OK) << "twice as many do not fit";
}

TEST_F(Lifecycle, AnInitWithoutMusicDetectionLeavesTheDetector) {
    Start(44100, 1, SAMPLE_FMT_S16);
    filter->mClassifier.mGathered = 40000;
    Start(8000, 1, SAMPLE_FMT_S16);
    EXPECT_EQ(filter->mClassifier.mGathered, 40000U);
}

TEST_F(Lifecycle, WithAChannelCountOf65536TheDetectorDoesNotDivideByZero) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_DENOISE});
    EXPECT_EQ(filter->mClassifier.Init(static_cast<unsigned short>(65536U), 32000, SAMPLE_FMT_S16),
              RESULT_OK);
    std::vector<short> samples(320);
    EXPECT_EQ(Process(samples, {AV_SOURCE_MICROPHONE}), RESULT_OK);
    EXPECT_EQ(filter->mClassifier.mGathered, 0U);
}

TEST_F(Lifecycle, SampleSizesAre1_2_4_8And0ForNoFormat) {
    const int expected[] = {1, 2, 4, 4, 8, 1, 2, 4, 4, 8};
    for (int fmt = 0; fmt < 10; ++fmt) {
        EXPECT_EQ(filter->GetSampleByteSize(static_cast<SampleFmt>(fmt)), expected[fmt]) << fmt;
    }
    for (const int fmt : {-1, -7, 10, 99}) {
        EXPECT_EQ(filter->GetSampleByteSize(static_cast<SampleFmt>(fmt)), 0) << fmt;
    }
}

}  // namespace
