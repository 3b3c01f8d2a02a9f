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

/// The entry point of the library: cleans up captured audio. It checks and corrects the phase of
/// stereo sources, mixes several sources, detects music, suppresses noise (at level 0 while music
/// plays) and applies a gain curve, in this order. Each processing kind is switched on and off
/// between two buffers.
///
///     AudioFilter filter;
///     ProcessSwitchMap switches = {{AP_DENOISE, true}, {AP_GAIN, true}};
///     filter.Init(32000, 1, SAMPLE_FMT_S16, &switches);
///     int size = bytesIn;
///     int code = filter.Process(in, out, size, {AV_SOURCE_MICROPHONE}, param, 0);
///     // RESULT_OK: `out` holds `size` bytes.
///     // RESULT_NEEDS_RESAMPLING: resample `out` to param.audioSampleRate, call ProcessResample.
///
/// Sources. Several sources travel in one buffer as equal source blocks, in the order of the list of
/// their types. Process suppresses noise and detects music only if a microphone is among them (with
/// AP_MIXING off: only if it comes first); ProcessResample ignores the types. At most 16 sources are
/// mixed.
///
/// Types and phase checks. The single-source chain checks type 3 with the phase checker of the
/// microphone, and does not check types outside 0..3. The multi-source chain checks both with the
/// checker of the block before them (in the first block, that of type 1); it checks no phase at all
/// if a type repeats before the first one outside 0..3.
///
/// Rates. 32000 to 44100 Hz are processed directly and with music detection, 8000 and 16000 Hz
/// directly and without; every other rate is handed back for resampling when noise suppression is
/// due (audio_filter/stream_rate.h). AudioDenoise documents the effect of each rate.
///
/// Sizes are in bytes and should hold whole frames. A phase check refuses an odd number of samples;
/// gain leaves the bytes of an incomplete sample unchanged. The suppressor ignores an incomplete last
/// frame, but refuses a size that is no multiple of the channels: the single-source chain then
/// outputs what its work buffer held before, the multi-source chain what outData held. The mixer
/// divides the whole samples of the buffer by the number of sources, so it mixes source blocks of
/// fractional samples out of step, or refuses them; after a refusal, the chain continues with what
/// its work buffer held.
///
/// Result codes (common/result_code.h): RESULT_OK, RESULT_BAD_ARGUMENT for nothing to process,
/// RESULT_INVALID for an invalid argument or size, RESULT_NOT_INITIALISED, RESULT_NEEDS_RESAMPLING,
/// RESULT_RESAMPLED.
///
/// Threads. The filter holds its own lock during SetMethod, SetParameter, Clear and every processing
/// call. Init, SetListener, SetLogger and the destructor must not run concurrently with any other
/// call; Init and the destructor take the lock only inside, for SetMethod and Clear.
///
/// Logging. While it is on, calls build and write log lines, which allocates and may block on files;
/// when memory runs out, a line is lost. The constructor, SetParameter, SetListener and SetLogger
/// never write one, nor does an accepted call of SyncProcessDelay that copies, or of ProcessResample
/// that neither suppresses noise nor applies gain.
class AUDIO_FILTER_API AudioFilter {
public:
    /// [setup] Not initialised, everything off. Throws std::bad_alloc when memory runs out.
    AudioFilter();
    /// [setup] Calls Clear. Does not delete the listener or the logger.
    ~AudioFilter();
    AudioFilter(const AudioFilter&) = delete;
    AudioFilter& operator=(const AudioFilter&) = delete;

    /// [setup] Configures the stream, with suppression level 3 and gain 0.8. A unit that does not
    /// support the stream stays uninitialised, and its kind cannot be switched on. Init logs this for
    /// the suppressor, the gain and the mixer, but not for the phase checks and the music detector.
    /// The suppressor accepts planar formats and returns silence for them. Throws std::bad_alloc when
    /// memory runs out, or when a second exceeds 2^31 - 1 bytes: the filter is then not initialised.
    /// @param sampleRate Hz, at least 1; phase checks support 8000..48000
    /// @param channels at least 1; the suppressor supports 1 and 2, phase checks 2
    /// @param fmt any but SAMPLE_FMT_NONE; the units support 16-bit (1) and 32-bit float (3), and all
    ///        but the suppressor and the music detector their planar forms (6, 8)
    /// @param switches see SetMethod; null leaves the kinds switched as they were, ready or not
    /// @return RESULT_OK; RESULT_INVALID for arguments out of range: the filter is then not
    ///         initialised
    int Init(int sampleRate, int channels, SampleFmt fmt, ProcessSwitchMap* switches);

    /// [any] Switches kinds on and off; a unit resumes in the state in which it was left. Notifies the
    /// listener of each change, with the lock held. Allocates for keys missing from the map and for
    /// the listener's message. Throws std::bad_alloc when memory runs out: the changes made so far
    /// have been reported, and repeating the call completes the rest.
    /// @param switches in: the requested kinds among AP_DENOISE, AP_PHASE_CHECK, AP_GAIN and
    ///        AP_MIXING, a missing one is off; out: the kinds that are on, all four inserted. A kind
    ///        whose unit is not initialised stays off.
    /// @return false for null
    bool SetMethod(ProcessSwitchMap* switches);

    /// [any] Sets a parameter of a unit, whether its kind is on or off.
    /// @param param null is refused
    /// @param type AP_GAIN or AP_DENOISE
    /// @return whether the unit accepted it. A suppression level for a mono stream returns false and is
    ///         not stored: it applies until music detection next runs, or for good at rates without
    ///         music detection.
    bool SetParameter(ProcessParam* param, ProcessType type);

    /// [setup] Sets the receiver of events; null for none. To receive the events of Init, set it
    /// before.
    /// @return true
    bool SetListener(FilterListener* listener);

    /// [setup] Stored, not used: log lines go to pr_log. The logger may be freed at any time.
    /// @return true
    bool SetLogger(MediaProcessLog* logger);

    /// [any] Back to not initialised: switches everything off without events, frees the buffers and
    /// clears the units. Blocks until a concurrent processing call returns. The music detector with
    /// its history, votes and verdict, the suppression level, the listener, the logger and the stream
    /// properties remain; the latter still bound the size of calls.
    /// @return true
    bool Clear();

    /// [audio] Runs the chain over a buffer: the mix of all sources with AP_MIXING on, otherwise the
    /// first source alone. About once a second, music detection takes longer.
    /// @param inData `size` bytes, one block per source, at any address. Phase correction writes into
    ///        it, and so does gain if no noise is suppressed, although it is declared const.
    /// @param outData room for `size` bytes and 10 ms of every channel; may be inData
    /// @param size bytes, 1 .. one second per source, a multiple of the number of sources. On return
    ///        (RESULT_OK, RESULT_NEEDS_RESAMPLING) the bytes in outData: up to 10 ms more or less
    ///        than one source block. If the mixer refuses the blocks (more than 16 sources, for
    ///        example), `size` bytes (whole samples) of the work buffer's previous contents, at most
    ///        one second and, for one or two channels, 320 frames, pass through the rest of the
    ///        chain. Otherwise unchanged.
    /// @param sources one type per source block; by value, so the caller allocates
    /// @param param on RESULT_NEEDS_RESAMPLING, the audio format is set; otherwise unchanged
    /// @param timestamp not used
    /// @return RESULT_OK, RESULT_BAD_ARGUMENT, RESULT_INVALID, RESULT_NOT_INITIALISED, or
    ///         RESULT_NEEDS_RESAMPLING: outData then holds the block, or the mix, before noise
    ///         suppression and gain, and param the format that ProcessResample requires
    int Process(const char* inData, char* outData, int& size, std::vector<AVSourceType> sources,
                AVParam& param, unsigned long long timestamp);

    /// [audio] The second step after RESULT_NEEDS_RESAMPLING: noise suppression and gain over a
    /// buffer that the host has resampled. Noise is suppressed only if the last call of Process or
    /// SyncProcessDelay, refused or not, had one source, of whatever type, and the format is the
    /// requested one; otherwise only gain applies.
    /// @param inData `size` bytes, of which only the first source block is used; gain may write into
    ///        it
    /// @param outData room for a block and 10 ms of every channel; may be inData only if no noise is
    ///        suppressed
    /// @param size bytes, 1 .. one second of the stream at its own rate, a multiple of the number of
    ///        sources; on return (RESULT_RESAMPLED) the bytes in outData. If the suppressor refuses
    ///        the block, it has already been divided by the number of sources.
    /// @param sources at least one; only their number counts
    /// @param param the format of the buffer
    /// @param timestamp not used
    /// @return RESULT_RESAMPLED, RESULT_BAD_ARGUMENT, RESULT_INVALID, RESULT_NOT_INITIALISED, or the
    ///         suppressor's own code
    int ProcessResample(const char* inData, char* outData, int& size,
                        std::vector<AVSourceType> sources, AVParam& param,
                        unsigned long long timestamp);

    /// [audio] Only mixes the sources, with AP_MIXING on, or copies the first one.
    /// @param inData `size` bytes, one block per source
    /// @param outData room for one block; may be inData
    /// @param size bytes, 1 .. one second per source, a multiple of the number of sources; on return
    ///        (RESULT_OK) the bytes in outData. If the mixer refuses the length, it has been rounded
    ///        down to whole samples.
    /// @param sources one type per source block; only their number counts
    /// @return RESULT_OK, RESULT_BAD_ARGUMENT, RESULT_INVALID, RESULT_NOT_INITIALISED, or the mixer's
    ///         own code: RESULT_BAD_ARGUMENT for more than 16 sources
    int SyncProcessDelay(const char* inData, char* outData, int& size,
                         std::vector<AVSourceType> sources);

private:
    /// A kind that SetMethod manages: its readiness test and its texts.
    struct Switch {
        ProcessType kind;
        bool (AudioFilter::*isReady)();
        const char* refusal;
        const char* turnedOn;
        const char* turnedOff;
    };

    /// How an entry reports a refused call. The line tags are fixed: hosts search their logs for them.
    struct EntryTags {
        const char* function;
        const char* nothingText;
        int nothing;
        int error;
        int notInited;
    };

    int GetSampleByteSize(SampleFmt fmt);
    int SingleProcess(char* inData, char* outData, int& size, AVSourceType source, AVParam& param);
    int MulitProcess(char* inData, char* outData, int& size, std::vector<AVSourceType> sources,
                     AVParam& param);

    /// Whether a type repeats before the first unknown one.
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

    void CheckPhase(char* inData, int size, AVSourceType source);
    bool Denoise(const char* inData, int& size);
    void CheckPhases(char* inData, int size, const std::vector<AVSourceType>& sources);
    void Mix(const char* inData, int& size);
    void DetectMusic(char* data, int size);
    int RequestResampling(const char* data, char* outData, int size, AVParam& param);

    ProcessLock mLock;
    bool mInited = false;
    std::int32_t mSampleRate = 0;   ///< Hz; 0 before the first accepted Init
    std::int32_t mProcessRate = 0;  ///< Hz, of the suppressor
    SampleFmt mSampleFmt = SAMPLE_FMT_NONE;
    std::int32_t mChannels = 0;
    bool mInPlace = false;       ///< required by the interface; nothing reads it
    bool mNeedResample = false;  ///< the suppressor does not support the rate
    bool mMusicCheck = false;    ///< music detection runs at the rate
    std::int32_t mSrcNum = 0;    ///< of the last Process or SyncProcessDelay, refused or not
    char* mBuffer = nullptr;     ///< one second, plus a suppressor block for one or two channels
    char* mBuffer2 = nullptr;    ///< as large; required by the interface, unused
    ProcessSwitchMap mSwitchState;
    PhaseCheck mPhaseCheck[3];
    AudioDenoise mDenoise;
    AudioGain mGain;
    AudioMixing mMixing;
    AudioClassifier mClassifier;
    FilterListener* mListener = nullptr;
    MediaProcessLog* mLogger = nullptr;
    std::int32_t mDenoiseLevel = 0;  ///< as set by the host, not clamped; 3 after Init
    std::atomic<bool> mIsMusic = false;
    std::size_t mBufferBytes = 0;  ///< of each work buffer
};
