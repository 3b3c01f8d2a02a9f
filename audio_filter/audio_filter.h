#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "audio_filter/filter_listener.h"
#include "audio_filter/process_param.h"
#include "classifier/audio_classifier.h"
#include "common/av_param.h"
#include "common/export.h"
#include "common/media_process.h"
#include "common/process_lock.h"
#include "log/media_process_log.h"
#include "units/audio_denoise.h"
#include "units/audio_gain.h"
#include "units/audio_mixing.h"
#include "units/phase_check.h"

/// Cleans up captured audio: checks and corrects the phase of stereo sources, mixes several
/// sources, detects music, suppresses noise (at level 0 while music plays) and shapes the level, in
/// this order. Each kind of processing is switched on and off between two buffers.
///
///     AudioFilter filter;
///     ProcessSwitchMap switches = {{AP_DENOISE, true}, {AP_GAIN, true}};
///     filter.Init(32000, 1, SAMPLE_FMT_S16, &switches);
///     int size = bytesIn;
///     int code = filter.Process(in, out, size, {AV_SOURCE_MICROPHONE}, param, 0);
///     // 0: `out` holds `size` bytes.
///     // 9: resample `out` to param.audioSampleRate and call ProcessResample.
///
/// Several sources lie in one buffer as equal blocks, in the order of the list of their kinds.
/// Noise is suppressed, and music detected, only where a microphone is among them.
///
/// Rates of 32000 and 44100 Hz and between are processed directly and with music detection, 8000
/// and 16000 Hz directly and without; every other rate is handed back for resampling when noise
/// suppression is due. What the suppressor makes of a rate, AudioDenoise says.
///
/// Result codes: 0 done, 2 nothing to process, 3 invalid argument or size, 4 not initialised, 9
/// resampling needed, 12 resample path done.
///
/// The filter holds a lock of its own over SetMethod, SetParameter, Clear and every processing
/// call. Init, SetListener, SetLogger and the destructor take none: no other call may be under way.
/// While logging is on, every call builds and writes log lines, which allocates and may wait for
/// files; a line for which there is no memory is lost.
class AUDIO_FILTER_API AudioFilter {
public:
    /// [setup] Not initialised, everything off. Throws std::bad_alloc when memory runs out.
    AudioFilter();
    /// [setup] Clears it. Listener and logger stay their owner's.
    ~AudioFilter();
    AudioFilter(const AudioFilter&) = delete;
    AudioFilter& operator=(const AudioFilter&) = delete;

    /// [setup] Takes a stream from now on, with suppression at level 3 and gain 0.8. A unit that
    /// does not take the stream is logged and cannot be switched on. Throws std::bad_alloc when
    /// memory runs out, or for a second of more than 2^31 - 1 bytes: the filter is then not
    /// initialised.
    /// @param sampleRate Hz, at least 1; phase checks take 8000..48000
    /// @param channels at least 1; the suppressor processes 1 and 2, phase checks 2
    /// @param fmt any but SAMPLE_FMT_NONE; the units take 16-bit (1) and 32-bit float (3), and all
    ///        but the suppressor their planar forms (6, 8)
    /// @param switches see SetMethod; null leaves the kinds switched as they were, ready or not
    /// @return 0; 3 for arguments out of range: the filter is then not initialised
    int Init(int sampleRate, int channels, SampleFmt fmt, ProcessSwitchMap* switches);

    /// [any] Switches kinds on and off; a unit goes on from the state in which it was left. The
    /// listener hears of each change, with the lock held. Allocates where the map lacks a kind, and
    /// for the listener's text. Throws std::bad_alloc when memory runs out: what has been switched
    /// till then has been told, and a call with the same map goes on from there.
    /// @param switches in: the kinds wanted, of AP_DENOISE, AP_PHASE_CHECK, AP_GAIN and AP_MIXING
    ///        (a missing one is off); out: those that are on, all four entered. A kind whose unit
    ///        is not initialised stays off.
    /// @return false for null
    bool SetMethod(ProcessSwitchMap* switches);

    /// [any] Tunes a unit, switched on or not.
    /// @param param not null
    /// @param type AP_GAIN or AP_DENOISE
    /// @return whether the unit took it. A suppression level of a mono stream answers false, holds
    ///         until the next block in which music is looked for, and is not remembered.
    bool SetParameter(ProcessParam* param, ProcessType type);

    /// [setup] Who hears of changes; null for nobody. To hear those that Init makes, set it before.
    /// @return true
    bool SetListener(FilterListener* listener);

    /// [setup] Kept, and not used: log lines go to pr_log, and the logger may be freed at any time.
    /// @return true
    bool SetLogger(MediaProcessLog* logger);

    /// [any] Back to not initialised: everything off, buffers and units released. Waits for a
    /// processing call that is under way.
    /// @return true
    bool Clear();

    /// [audio] Runs the chain over a buffer: over all sources mixed, with AP_MIXING on, else over
    /// the first source alone. Once a second, the music detection in it takes longer.
    /// @param inData size bytes, one block a source, at any address. Phase correction, and gain
    ///        where no noise is suppressed, are written into it, although it is declared const.
    /// @param outData room for size bytes and one frame of 10 ms of every channel more; may be
    ///        inData
    /// @param size bytes, 1 .. one second a source, a multiple of the sources; on return (0, 9) the
    ///        bytes in outData: up to one frame more or less than a block had, or, where the mixer
    ///        refuses the blocks, up to the work buffer's one second and a frame. Otherwise
    ///        untouched.
    /// @param sources one kind a block; taken by value, which allocates at the caller's side
    /// @param param the audio format is set on 9, and only then
    /// @param timestamp not used
    /// @return 0, 2, 3, 4, or 9: outData then holds the block, or the mix, as it was before noise
    ///        suppression and gain, and param the format that ProcessResample wants
    int Process(const char* inData, char* outData, int& size, std::vector<AVSourceType> sources,
                AVParam& param, unsigned long long timestamp);

    /// [audio] The second half after a 9: noise suppression and gain over a buffer that the host
    /// has resampled. Suppresses only if the last call of Process had one source and the format is
    /// the one that was asked for; otherwise only gain is applied.
    /// @param inData size bytes, of which the first source's block counts; gain may be written into
    ///        it
    /// @param outData room for a block and one frame of 10 ms of every channel; may be inData only
    ///        where no noise is suppressed
    /// @param size bytes, 1 .. one second of the stream at its own rate, a multiple of the sources;
    ///        on return (12) the bytes in outData
    /// @param param the format of the buffer
    /// @param timestamp not used
    /// @return 12 done, 2, 3, 4, or the suppressor's own code
    int ProcessResample(const char* inData, char* outData, int& size,
                        std::vector<AVSourceType> sources, AVParam& param,
                        unsigned long long timestamp);

    /// [audio] Only mixes the sources, with AP_MIXING on, or copies the first one.
    /// @param inData size bytes, one block a source
    /// @param outData room for one block; may be inData
    /// @param size bytes, 1 .. one second a source, a multiple of the sources; on return (0) the
    ///        bytes in outData
    /// @return 0, 2, 3, 4, or the mixer's own code
    int SyncProcessDelay(const char* inData, char* outData, int& size,
                         std::vector<AVSourceType> sources);

private:
    /// A kind that SetMethod manages: when it may be on, and what is said of it.
    struct Switch {
        ProcessType kind;
        bool (AudioFilter::*isReady)();
        const char* refusal;
        const char* turnedOn;
        const char* turnedOff;
    };

    /// How an entry reports a call that it refuses: the line tag of each reason.
    struct EntryTags {
        const char* function;
        const char* nothingText;
        int nothing;
        int error;
        int notInited;
    };

    int GetSampleByteSize(SampleFmt fmt);
    int SingleProcess(char* inData, char* outData, int& size, AVSourceType kind, AVParam& param);
    int MulitProcess(char* inData, char* outData, int& size, std::vector<AVSourceType> sources,
                     AVParam& param);

    /// Whether some kind repeats before the first one that is not known.
    bool CheckSameSrcType(std::vector<AVSourceType> sources);
    bool CheckMultiMicSrc(std::vector<AVSourceType> sources);
    bool HaveMicSrc(std::vector<AVSourceType> sources);

    static const Switch kSwitches[4];

    void SetRate(int sampleRate);
    void AllocateBuffers();
    void ReleaseBuffers();
    void InitUnits();
    void SwitchAllOff();

    bool IsDenoiseReady();
    bool IsPhaseCheckReady();
    bool IsGainReady();
    bool IsMixingReady();
    void Apply(const Switch& entry, bool& wanted);

    int CheckCall(const EntryTags& tags, const char* inData, const char* outData, int size,
                  int sources, int boundSources);
    bool ChecksPhase();
    bool DenoisesResampled(const AVParam& param);

    void CheckPhase(char* inData, int size, AVSourceType kind);
    bool Denoise(const char* inData, int& size);
    void CheckPhases(char* inData, int size, const std::vector<AVSourceType>& sources);
    void Mix(const char* inData, int& size);
    void DetectMusic(char* data, int size);
    int AskForResampling(const char* data, char* outData, int size, AVParam& param);

    ProcessLock mLock;
    bool mInited = false;
    std::int32_t mSampleRate = 0;   ///< Hz; 0 before the first accepted Init
    std::int32_t mProcessRate = 0;  ///< Hz, of the noise suppression
    SampleFmt mSampleFmt = SAMPLE_FMT_NONE;
    std::int32_t mChannels = 0;
    bool mInPlace = false;
    bool mNeedResample = false;  ///< noise suppression cannot take the rate
    bool mMusicCheck = false;    ///< music is detected at the rate
    std::int32_t mSrcNum = 0;    ///< of the last Process or SyncProcessDelay, refused or not
    char* mBuffer = nullptr;     ///< one second, and of one or two channels a frame more
    char* mBuffer2 = nullptr;    ///< as large
    ProcessSwitchMap mSwitchState;
    PhaseCheck mPhaseCheck[3];
    AudioDenoise mDenoise;
    AudioGain mGain;
    AudioMixing mMixing;
    AudioClassifier mClassifier;
    FilterListener* mListener = nullptr;
    MediaProcessLog* mLogger = nullptr;
    std::int32_t mDenoiseLevel = 0;  ///< as the host gave it; 3 from Init on
    std::atomic<bool> mIsMusic = false;
    std::size_t mBufferBytes = 0;  ///< of each work buffer
};
