#include "common/result_code.h"
#include "filter_fixture.h"

namespace {

class Switches : public FilterTest {
protected:
    static std::string Info(const std::string& text) {
        return "[INFO]MediaProcessLog:AudioFilter::SetMethod:*:" + text;
    }
    static std::string Error(const std::string& text) {
        return "[ERROR]MediaProcessLog:AudioFilter::SetMethod:*:try to open " + text +
               ", but it is not inited!!!";
    }
    const Lines kJustSet = {Info("switch state is set")};
};

TEST_F(Switches, FourKindsSwitchOnAndOffWithEightCodesInOrder) {
    Start(32000, 2, SAMPLE_FMT_S16);
    ProcessSwitchMap all;
    for (int kind = 0; kind < 15; ++kind) {
        all[static_cast<ProcessType>(kind)] = true;
    }
    EXPECT_TRUE(filter->SetMethod(&all));
    EXPECT_EQ(events, (Events{{150001, "AP_DENOISE turn on"},
                              {150003, "AP_PHASE_CHECK turn on"},
                              {150007, "AP_GAIN turn on"},
                              {150009, "AP_MIXING turn on"}}));
    EXPECT_EQ(log.Lines(), (Lines{Info("AP_DENOISE turn on"), Info("AP_PHASE_CHECK turn on"),
                                  Info("AP_GAIN turn on"), Info("AP_MIXING turn on"),
                                  Info("switch state is set")}));
    EXPECT_TRUE(all[VP_SHARPEN]) << "neither read nor written";
    EXPECT_FALSE(filter->mSwitchState[VP_SHARPEN]);

    events.clear();
    ProcessSwitchMap none;
    EXPECT_TRUE(filter->SetMethod(&none));
    EXPECT_EQ(events, (Events{{150002, "AP_DENOISE turn off"},
                              {150004, "AP_PHASE_CHECK turn off"},
                              {150008, "AP_GAIN turn off"},
                              {150010, "AP_MIXING turn off"}}));
    EXPECT_EQ(log.Lines(), (Lines{Info("AP_DENOISE turn off"), Info("AP_PHASE_CHECK turn off"),
                                  Info("AP_GAIN turn off"), Info("AP_MIXING turn off"),
                                  Info("switch state is set")}));
}

TEST_F(Switches, AChangeIsLoggedBeforeTheListenerIsNotified) {
    struct Reading : FilterListener {
        void OnEvent(int, std::string) override { logged.push_back(log->Lines()); }
        LogCapture* log = nullptr;
        std::vector<Lines> logged;
    } listener;
    listener.log = &log;
    Start(32000, 2, SAMPLE_FMT_S16);
    filter->SetListener(&listener);
    ProcessSwitchMap switches = {{AP_DENOISE, true}, {AP_GAIN, true}};
    EXPECT_TRUE(filter->SetMethod(&switches));
    EXPECT_EQ(listener.logged,
              (std::vector<Lines>{{Info("AP_DENOISE turn on")}, {Info("AP_GAIN turn on")}}));
}

TEST_F(Switches, AnEmptyMapReceivesExactlyFourKindsAllOff) {
    Start(32000, 2, SAMPLE_FMT_S16, {AP_GAIN});
    ProcessSwitchMap empty;
    EXPECT_TRUE(filter->SetMethod(&empty));
    EXPECT_EQ(
        empty,
        (ProcessSwitchMap{
            {AP_DENOISE, false}, {AP_PHASE_CHECK, false}, {AP_GAIN, false}, {AP_MIXING, false}}));
    EXPECT_EQ(events, (Events{{150008, "AP_GAIN turn off"}}));
}

TEST_F(Switches, AKindWhoseUnitIsNotInitialisedStaysOffWithALogLineAndNoEvent) {
    Start(32000, 1, SAMPLE_FMT_DBL);
    ProcessSwitchMap wanted = {{AP_DENOISE, true}};
    EXPECT_TRUE(filter->SetMethod(&wanted));
    EXPECT_EQ(log.Lines(), (Lines{Error("audio denoise"), Info("switch state is set")}));
    EXPECT_FALSE(wanted[AP_DENOISE]);
    EXPECT_FALSE(filter->mSwitchState[AP_DENOISE]);
    EXPECT_EQ(events, Events{});
}

TEST_F(Switches, EveryKindHasItsOwnRefusalText) {
    ProcessSwitchMap wanted = {
        {AP_DENOISE, true}, {AP_PHASE_CHECK, true}, {AP_GAIN, true}, {AP_MIXING, true}};
    EXPECT_TRUE(filter->SetMethod(&wanted));
    EXPECT_EQ(log.Lines(), (Lines{Error("audio denoise"), Error("phase check"), Error("AGC"),
                                  Error("audio mixing"), Info("switch state is set")}));
    EXPECT_EQ(
        wanted,
        (ProcessSwitchMap{
            {AP_DENOISE, false}, {AP_PHASE_CHECK, false}, {AP_GAIN, false}, {AP_MIXING, false}}));
}

TEST_F(Switches, PhaseCheckIsRefusedWhenAnyOneOfThreeCheckersIsNotInitialised) {
    for (PhaseCheck& check : filter->mPhaseCheck) {
        Start(32000, 2, SAMPLE_FMT_S16);
        check.Clear();
        ProcessSwitchMap wanted = {{AP_PHASE_CHECK, true}};
        EXPECT_TRUE(filter->SetMethod(&wanted));
        EXPECT_FALSE(wanted[AP_PHASE_CHECK]);
        EXPECT_EQ(log.Lines(), (Lines{Error("phase check"), Info("switch state is set")}));
    }
}

TEST_F(Switches, AKindThatIsOnAndRefusedSwitchesOffWithAnEvent) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_GAIN});
    ProcessSwitchMap wanted = {{AP_GAIN, true}};
    EXPECT_EQ(filter->Init(32000, 1, SAMPLE_FMT_DBL, &wanted), RESULT_OK);
    EXPECT_EQ(events, (Events{{150008, "AP_GAIN turn off"}}));
    EXPECT_FALSE(wanted[AP_GAIN]);
}

TEST_F(Switches, TheSameMapTwiceSendsEventsOnce) {
    Start(32000, 1, SAMPLE_FMT_S16);
    ProcessSwitchMap wanted = {{AP_GAIN, true}};
    filter->SetMethod(&wanted);
    log.Lines();
    events.clear();
    EXPECT_TRUE(filter->SetMethod(&wanted));
    EXPECT_EQ(events, Events{});
    EXPECT_EQ(log.Lines(), kJustSet);
}

TEST_F(Switches, VoiceChangeStaysTrueInTheCallersMapAndFalseInTheFilter) {
    Start(32000, 1, SAMPLE_FMT_S16);
    filter->mSwitchState[AP_VOICE_CHANGE] = true;
    ProcessSwitchMap wanted = {{AP_VOICE_CHANGE, true}};
    EXPECT_TRUE(filter->SetMethod(&wanted));
    EXPECT_TRUE(wanted[AP_VOICE_CHANGE]);
    EXPECT_FALSE(filter->mSwitchState[AP_VOICE_CHANGE]);
    EXPECT_EQ(events, Events{});
}

TEST_F(Switches, ANullMapLogsAWarningReturnsFalseAndChangesNothing) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_GAIN});
    EXPECT_FALSE(filter->SetMethod(nullptr));
    EXPECT_EQ(log.Lines(),
              Lines{"[WARN]MediaProcessLog:AudioFilter::SetMethod:*:input switch state is null!"});
    EXPECT_TRUE(filter->mSwitchState[AP_GAIN]);
}

TEST_F(Switches, WithoutAListenerChangesAreLoggedOnly) {
    Start(32000, 1, SAMPLE_FMT_S16);
    EXPECT_TRUE(filter->SetListener(nullptr));
    ProcessSwitchMap wanted = {{AP_GAIN, true}};
    filter->SetMethod(&wanted);
    EXPECT_EQ(log.Lines(), (Lines{Info("AP_GAIN turn on"), Info("switch state is set")}));
    EXPECT_EQ(events, Events{});
}

TEST_F(Switches, SwitchingLeavesTheUnits) {
    Start(32000, 1, SAMPLE_FMT_S16, {AP_GAIN});
    ProcessParam half = {0.5F, 0};
    EXPECT_TRUE(filter->SetParameter(&half, AP_GAIN));
    ProcessSwitchMap off;
    filter->SetMethod(&off);
    ProcessSwitchMap on = {{AP_GAIN, true}};
    filter->SetMethod(&on);
    EXPECT_EQ(filter->mGain.mGain, 0.5F);
}

TEST_F(Switches, Level7IsAppliedAs3AndStoredAs7) {
    Start(32000, 2, SAMPLE_FMT_S16);
    ProcessParam level = {0.0F, 7};
    EXPECT_TRUE(filter->SetParameter(&level, AP_DENOISE));
    EXPECT_EQ(filter->mDenoiseLevel, 7);
    level.level = -4;
    EXPECT_TRUE(filter->SetParameter(&level, AP_DENOISE));
    EXPECT_EQ(filter->mDenoiseLevel, -4);
}

TEST_F(Switches, ALevelOnAMonoStreamReturnsFalseAndIsNotStored) {
    Start(32000, 1, SAMPLE_FMT_S16);
    ProcessParam level = {0.0F, 1};
    EXPECT_FALSE(filter->SetParameter(&level, AP_DENOISE));
    EXPECT_EQ(filter->mDenoiseLevel, 3);
}

TEST_F(Switches, ParametersOfOtherKindsOrUninitialisedUnitsReturnFalse) {
    ProcessParam values = {0.5F, 1};
    EXPECT_FALSE(filter->SetParameter(&values, AP_GAIN));
    EXPECT_FALSE(filter->SetParameter(&values, AP_DENOISE));
    Start(32000, 2, SAMPLE_FMT_S16);
    for (const int kind : {-1, 1, 2, 4, 5, 14, 15}) {
        EXPECT_FALSE(filter->SetParameter(&values, static_cast<ProcessType>(kind))) << kind;
    }
    EXPECT_FALSE(filter->SetParameter(nullptr, AP_GAIN));
    EXPECT_TRUE(filter->SetParameter(&values, AP_GAIN)) << "even while switched off";
    EXPECT_EQ(log.Lines(), Lines{}) << "SetParameter logs nothing";
}

}  // namespace
