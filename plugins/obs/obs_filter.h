#pragma once

#include <obs-module.h>

#include <atomic>
#include <cstdint>
#include <vector>

#include "stream/stream.h"

namespace audio_filter::obs {

/// One audio filter of a source in OBS: a stream in the format of OBS's audio. Blocks keep their length; their
/// timestamps are moved back by the latency, so that sound and picture stay in sync.
///
/// A format that the stream does not support is logged, and audio then passes through unchanged.
class ObsFilter {
public:
    /// [setup] Takes the format that OBS has at this time; OBS restarts to change it. May throw std::bad_alloc.
    ObsFilter(obs_data_t* settings, obs_source_t* source);
    /// [setup]
    ~ObsFilter();
    ObsFilter(const ObsFilter&) = delete;
    ObsFilter& operator=(const ObsFilter&) = delete;

    /// [any] Applies the settings, and logs and corrects those out of range.
    void Update(obs_data_t* settings);

    /// [audio] Processes a block in place.
    void Process(obs_audio_data& audio);

    /// [any] Logs changes of the verdicts; one thread at a time.
    void LogEvents();

    /// [any] Whether the format is supported.
    bool IsRunning() const { return mRunning; }
    /// [any] Hz
    int SampleRate() const { return mSampleRate; }
    /// [any]
    int Channels() const { return mChannels; }
    /// [any] In frames.
    int Latency() const { return mStream.Latency(); }
    /// [any] In ms.
    double LatencyMs() const;
    /// [any]
    bool DetectsMusic() const;
    /// [any]
    bool IsMusic() const { return mStream.IsMusic(); }
    /// [any] In dB, 0 or above.
    float Reduction() const { return mStream.Reduction(); }

private:
    static void OnEnable(void* filter, calldata_t* data);
    static void OnGetReport(void* filter, calldata_t* data);

    bool IsInterrupted(const obs_audio_data& audio);
    void DiscardPending();
    void MoveTimestamp(obs_audio_data& audio) const;

    obs_source_t* mSource;
    int mSampleRate = 0;
    int mChannels = 0;
    bool mRunning = false;
    Stream mStream;
    std::uint64_t mLatencyNs = 0;
    std::uint64_t mNextTimestamp = 0;     ///< of the input, in ns
    std::atomic<bool> mSwitched = false;  ///< OBS has switched the filter on or off
    std::vector<float> mDiscarded;
};

}  // namespace audio_filter::obs
