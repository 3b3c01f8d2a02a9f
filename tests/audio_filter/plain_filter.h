#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "classifier/audio_classifier.h"
#include "common/av_param.h"
#include "common/media_process.h"
#include "units/audio_denoise.h"
#include "units/audio_gain.h"
#include "units/audio_mixing.h"
#include "units/phase_check.h"

/// Reference model of AudioFilter: drives the units directly, one statement after another, on copies
/// of the buffers. It also predicts the log lines and events.
class PlainFilter {
public:
    /// A call of a processing entry. The data are processed in place; the addresses are those of the
    /// filter's call, for the log.
    struct Call {
        std::vector<char> in;
        std::vector<char> out;
        bool nullIn = false;
        bool nullOut = false;
        bool inPlace = false;
        int size = 0;
        std::vector<AVSourceType> sources;
        AVParam param;
        const void* inAddress = nullptr;
        const void* outAddress = nullptr;
        const void* workAddress = nullptr;
    };

    PlainFilter();

    int Init(int sampleRate, int channelCount, SampleFmt fmt, ProcessSwitchMap* switches);
    /// An Init that ran out of memory: the units are still those of the stream before.
    void FailToInit(int sampleRate, int channelCount, SampleFmt fmt);
    void Clear();
    bool SetMethod(ProcessSwitchMap* switches);
    bool SetParameter(float gain, int level, ProcessType type);
    int Process(Call& call);
    int ProcessResample(Call& call);
    int SyncProcessDelay(Call& call);

    static int SampleBytesOf(SampleFmt fmt);

    bool hasListener = false;
    std::vector<std::string> messages;                ///< since the start; the caller clears it
    std::vector<std::pair<int, std::string>> events;  ///< the same
    int sourceCount = 0;
    bool music = false;
    int level = 0;
    std::map<ProcessType, bool> on;

private:
    void Log(const char* level, const char* function, const std::string& line, const char* format,
             ...);
    void TakeStream(int sampleRate, int channelCount, SampleFmt fmt);
    bool Exceeds(int size, int seconds) const;
    void Switch(ProcessSwitchMap& switches, ProcessType kind, bool ready, const char* name,
                const char* opening);
    int Single(Call& call);
    int Multi(Call& call);
    void DetectMusic(char* data, int size);
    int HandBack(Call& call, const std::vector<char>& from);

    bool mInited = false;
    bool mHasStream = false;
    std::int64_t mRate = 0;
    int mProcessRate = 0;
    std::int64_t mChannels = 0;
    int mFmt = -1;
    std::int64_t mSampleBytes = 0;
    std::vector<char> mWork;
    PhaseCheck mChecks[3];
    AudioDenoise mDenoise;
    AudioGain mGain;
    AudioMixing mMixing;
    AudioClassifier mClassifier;
};
