#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include "stream/delay_line.h"
#include "stream/event_queue.h"
#include "stream/fade.h"
#include "stream/gain_stage.h"
#include "stream/music_detection.h"
#include "stream/polarity.h"
#include "stream/rate_plan.h"
#include "stream/sample_layout.h"
#include "stream/stream.h"
#include "stream/suppression_channel.h"

namespace audio_filter {

/// A stream of one format: collects the host's frames into processing blocks and runs the stages.
class Stream::Engine {
public:
    Engine(const StreamFormat& format, const StreamSettings& settings);

    /// @param in null for silence
    void Process(const void* const* in, void* const* out, std::size_t frames);
    int Drain(void* const* out, int frames);

    const StreamFormat& Format() const { return mFormat; }
    std::size_t BlockFrames() const { return mBlock; }
    std::size_t Latency() const { return mBlock + mDelay; }

    void SetSettings(const StreamSettings& settings);
    bool ReplaceSettings(const StreamSettings& expected, const StreamSettings& settings);
    StreamSettings Settings() const;
    bool IsMusic() const { return mIsMusic; }
    bool IsReversed(int source) const { return (mReversed >> source & 1) != 0; }
    float Reduction() const { return mReduction; }
    bool NextEvent(StreamEvent& event) { return mEvents.Pop(event); }

private:
    /// What a processing block passes through on its way out, per channel.
    struct Channel {
        Channel(internal::RatePlan plan, bool s16, std::size_t fadeFrames, std::uint32_t seed);

        internal::SuppressionChannel suppression;
        internal::DelayLine unsuppressed;
        internal::GainStage gain;
        std::vector<float> delayed;     ///< the block, not suppressed
        std::vector<float> suppressed;  ///< the block, suppressed
        std::vector<float> out;         ///< the block for the host
    };

    std::span<float> In(std::size_t source, std::size_t channel);
    void ProcessBlock();
    void Start(const StreamSettings& settings);
    void Report(const StreamSettings& settings);
    void Report(StreamEvent::Type type, bool on, std::size_t source = 0);
    void CorrectPolarity(const StreamSettings& settings);
    void Mix(bool mix);
    void DetectMusic(const StreamSettings& settings);
    void SetSuppression(const StreamSettings& settings);
    void SuppressNoise(bool wanted);
    void Measure();
    void Output(const StreamSettings& settings);

    StreamFormat mFormat;
    internal::RatePlan mPlan;
    internal::SampleLayout mLayout;
    std::size_t mBlock;
    std::size_t mDelay = 0;  ///< frames, of suppression

    std::vector<float> mIn;  ///< the block of each channel of each source
    std::deque<Channel> mChannels;
    std::vector<internal::Polarity> mPolarities;  ///< per source; none unless stereo
    internal::MusicDetection mMusic;
    std::vector<float> mMixed;    ///< a block
    std::vector<float> mWeights;  ///< of a fade, for a block

    std::size_t mPosition = 0;        ///< in the block
    std::size_t mPending = 0;         ///< frames to drain
    std::int64_t mReceived = 0;       ///< frames at the start of the block
    bool mStarted = false;            ///< a block has been processed
    StreamSettings mCurrent;          ///< of the last block
    internal::Fade mMixFade;          ///< 1: mixed
    internal::Fade mSuppressionFade;  ///< 1: suppressed
    /// Frames in the suppressors since they run. They run while they are on or fade out; before their output is faded in,
    /// everything from before has to leave their delay.
    std::size_t mFilled = 0;
    int mLevel = 0;  ///< of the suppressors

    std::atomic<std::uint64_t> mSettings;  ///< packed
    std::atomic<bool> mIsMusic = false;
    std::atomic<std::uint32_t> mReversed = 0;  ///< a bit per source
    std::atomic<float> mReduction = 0.0F;
    internal::EventQueue mEvents;
};

}  // namespace audio_filter
