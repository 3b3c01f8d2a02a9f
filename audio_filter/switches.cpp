#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "audio_filter/audio_filter.h"
#include "log/log_line.h"

using namespace audio_filter::internal;

const AudioFilter::Switch AudioFilter::kSwitches[4] = {
    {AP_DENOISE, &AudioFilter::IsDenoiseReady, "try to open audio denoise, but it is not inited!!!",
     "AP_DENOISE turn on", "AP_DENOISE turn off"},
    {AP_PHASE_CHECK, &AudioFilter::IsPhaseCheckReady,
     "try to open phase check, but it is not inited!!!", "AP_PHASE_CHECK turn on",
     "AP_PHASE_CHECK turn off"},
    {AP_GAIN, &AudioFilter::IsGainReady, "try to open AGC, but it is not inited!!!",
     "AP_GAIN turn on", "AP_GAIN turn off"},
    {AP_MIXING, &AudioFilter::IsMixingReady, "try to open audio mixing, but it is not inited!!!",
     "AP_MIXING turn on", "AP_MIXING turn off"}};

bool AudioFilter::SetMethod(ProcessSwitchMap* switches) {
    const ProcessAutolock hold(&mLock);
    if (switches == nullptr) {
        LogLine(PROCESS_LOG_WARN, {"AudioFilter::SetMethod"}, "input switch state is null!");
        return false;
    }
    for (const Switch& entry : kSwitches) {
        Apply(entry, (*switches)[entry.kind]);
    }
    mSwitchState[AP_VOICE_CHANGE] = false;
    LogLine(PROCESS_LOG_INFO, {"AudioFilter::SetMethod"}, "switch state is set");
    return true;
}

/// @param wanted in: whether the kind is requested; out: whether it is on
void AudioFilter::Apply(const Switch& entry, bool& wanted) {
    bool& on = mSwitchState[entry.kind];
    if (wanted && !(this->*entry.isReady)()) {
        LogLine(PROCESS_LOG_ERROR, {"AudioFilter::SetMethod"}, entry.refusal);
        wanted = false;
    }
    if (wanted == on) {
        return;
    }
    const char* text = wanted ? entry.turnedOn : entry.turnedOff;
    // Read once: a writer that the log line reaches may set another listener.
    FilterListener* const listener = mListener;
    // Allocated before the kind is switched: no change goes unreported when memory runs out.
    std::string message = listener != nullptr ? text : "";
    on = wanted;
    LogLine(PROCESS_LOG_INFO, {"AudioFilter::SetMethod"}, text);
    if (listener != nullptr) {
        const int turnedOn = 150001 + 2 * entry.kind;
        listener->OnEvent(on ? turnedOn : turnedOn + 1, std::move(message));
    }
}

bool AudioFilter::SetParameter(ProcessParam* param, ProcessType type) {
    const ProcessAutolock hold(&mLock);
    if (param == nullptr) {
        return false;
    }
    if (type == AP_GAIN) {
        return mGain.IsInited() && mGain.SetGain(param->gain);
    }
    if (type == AP_DENOISE && mDenoise.IsInited() && mDenoise.Config(param->level)) {
        mDenoiseLevel = param->level;  // not clamped; the unit clamps its own copy
        return true;
    }
    return false;
}

bool AudioFilter::IsDenoiseReady() {
    return mDenoise.IsInited();
}

bool AudioFilter::IsPhaseCheckReady() {
    return std::all_of(std::begin(mPhaseCheck), std::end(mPhaseCheck),
                       [](PhaseCheck& check) { return check.IsInited(); });
}

bool AudioFilter::IsGainReady() {
    return mGain.IsInited();
}

bool AudioFilter::IsMixingReady() {
    return mMixing.IsInited();
}
