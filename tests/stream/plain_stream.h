#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "stream/fade.h"
#include "stream/mixer.h"
#include "stream/music_detection.h"
#include "stream/rate_plan.h"
#include "stream/resampler.h"
#include "stream/stream_types.h"
#include "stream/to_s16.h"
#include "units/audio_gain.h"
#include "units/ns_wrap.h"
#include "units/phase_check.h"

namespace audio_filter {

/// Reference model of Stream: keeps every sample that it has received, finds delayed ones by their number, and
/// runs the units on whole processing blocks.
class PlainStream {
public:
    using Samples = std::vector<float>;

    PlainStream(const StreamFormat& format, const StreamSettings& given)
        : settings(given),
          mFormat(format),
          mS16(format.samples == SAMPLE_FMT_S16 || format.samples == SAMPLE_FMT_S16P),
          mPlan(internal::RatePlan::For(format.sampleRate)),
          mBlock(mPlan.BlockFrames()),
          mFade(static_cast<std::size_t>(format.sampleRate / 100)),
          mIn(static_cast<std::size_t>(format.channels * format.sources)),
          mMusic(std::make_unique<internal::MusicDetection>(format.sampleRate)) {
        for (std::uint32_t channel = 0; channel < static_cast<std::uint32_t>(format.channels);
             ++channel) {
            mChannels.push_back(std::make_unique<Channel>(mPlan, channel + 2));
            mChannels.back()->out.assign(mBlock, 0.0F);
        }
        mSources.resize(static_cast<std::size_t>(format.channels == 2 ? format.sources : 0));
        for (Source& source : mSources) {
            source.check.Init(format.sampleRate / mPlan.down, false);
        }
        mDelay = mChannels[0]->Delay(mPlan);
    }

    std::size_t Latency() const { return mBlock + mDelay; }

    /// @param in the samples of each channel of each source
    /// @return those of each output channel
    std::vector<Samples> Play(const std::vector<Samples>& in) {
        std::vector<Samples> out(mChannels.size());
        for (std::size_t i = 0; i < in[0].size(); ++i) {
            for (std::size_t k = 0; k < in.size(); ++k) {
                mIn[k].push_back(!mFormat.finite || std::isfinite(in[k][i]) ? in[k][i] : 0.0F);
            }
            for (std::size_t channel = 0; channel < out.size(); ++channel) {
                out[channel].push_back(mChannels[channel]->out[mReceived]);
            }
            ++mReceived;
            if (mReceived % mBlock == 0) {
                ProcessBlock();
            }
        }
        mPending = Latency();
        return out;
    }

    /// @return at most `frames` of what is pending
    std::vector<Samples> Drain(std::size_t frames) {
        const std::size_t count = std::min(frames, mPending);
        const std::size_t left = mPending - count;
        std::vector<Samples> out = Play(std::vector<Samples>(mIn.size(), Samples(count)));
        mPending = left;
        return out;
    }

    StreamSettings settings;  ///< clamped
    std::vector<StreamEvent> events;
    bool music = false;

    bool IsReversed(std::size_t source) const {
        return source < mSources.size() && mSources[source].negates;
    }

private:
    struct Source {
        PhaseCheck check;
        bool detected = false;
        bool negates = false;
        std::size_t fade = 0;
    };

    /// A channel of the mix, sample by sample from the start of the stream.
    struct Channel {
        Channel(internal::RatePlan plan, std::uint32_t seed) : toS16(seed) {
            if (plan.Resamples()) {
                toSuppressor.emplace(plan.down, plan.up);
                fromSuppressor.emplace(plan.up, plan.down);
            }
            suppressor.Init(32000, SAMPLE_FMT_S16, 0);
        }

        std::size_t Delay(internal::RatePlan plan) const {
            const auto frames = [plan](int samples) { return samples * plan.down / plan.up; };
            int delay = frames(internal::kSuppressorDelay);
            if (toSuppressor) {
                delay += toSuppressor->Delay() + frames(fromSuppressor->Delay());
            }
            return static_cast<std::size_t>(delay);
        }

        Samples mixed;
        Samples out;
        internal::ToS16 toS16;
        NSWrap suppressor;
        std::optional<internal::Resampler> toSuppressor;
        std::optional<internal::Resampler> fromSuppressor;
        Samples resampled;  ///< the input of the suppressor since its start
        Samples gains;      ///< of the upper half of its band
        std::optional<float> gainFrom;
        std::optional<float> gainTo;
        std::size_t gainFade = 0;
    };

    Samples LastBlock(const Samples& samples) const {
        return {samples.end() - static_cast<std::ptrdiff_t>(mBlock), samples.end()};
    }

    void ProcessBlock() {
        const bool first = mReceived == mBlock;
        if (first) {
            mBefore = settings;
            mMixFade = settings.mix ? mFade : 0;
            mSuppressionFade = settings.suppression ? mFade : 0;
            mFilled = settings.suppression ? mDelay : 0;
        }
        Event(StreamEvent::Type::kSuppression, mBefore.suppression.has_value(),
              settings.suppression.has_value());
        Event(StreamEvent::Type::kGain, mBefore.gain.has_value(), settings.gain.has_value());
        Event(StreamEvent::Type::kPhaseCheck, mBefore.phaseCheck, settings.phaseCheck);
        Event(StreamEvent::Type::kMixing, mBefore.mix, settings.mix);
        std::vector<Samples> block;
        for (const Samples& samples : mIn) {
            block.push_back(LastBlock(samples));
        }
        for (std::size_t source = 0; source < mSources.size(); ++source) {
            CorrectPolarity(source, block[2 * source], block[2 * source + 1], first);
        }
        Mix(block);
        for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
            Samples& mixed = mChannels[channel]->mixed;
            mixed.insert(mixed.end(), block[channel].begin(), block[channel].end());
        }
        const bool detects = settings.music == MusicMode::kKeep && settings.suppression;
        const bool detected = detects && mMusic->Process(block[0]);
        Event(StreamEvent::Type::kMusic, music, detected);
        music = detected;
        mLevel = music ? 0 : settings.suppression.value_or(mLevel);
        const std::vector<Samples> suppressed = Suppressed();
        for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
            Samples samples = suppressed[channel];
            ApplyGain(*mChannels[channel], samples, first);
            Samples& out = mChannels[channel]->out;
            out.insert(out.end(), samples.begin(), samples.end());
        }
        mBefore = settings;
    }

    void Event(StreamEvent::Type type, bool before, bool now, std::size_t source = 0) {
        if (before != now) {
            events.push_back({type, now, static_cast<int>(source),
                              static_cast<std::int64_t>(mReceived - mBlock)});
        }
    }

    void CorrectPolarity(std::size_t index, Samples& left, const Samples& right, bool first) {
        Source& source = mSources[index];
        const bool given = (settings.reversed >> index & 1) != 0;
        if (first) {
            source.negates = given;
            source.fade = given ? mFade : 0;
        }
        if (settings.phaseCheck) {
            const bool corrects = source.check.mOpposedShare > 0.7F;
            std::vector<short> frames;
            bool shows = false;
            for (std::size_t i = 0; i < mBlock; i += static_cast<std::size_t>(mPlan.down)) {
                frames.push_back(internal::NearestS16(left[i]));
                shows = shows || (frames.back() != 0 && frames.back() != -32768);
                frames.push_back(internal::NearestS16(right[i]));
            }
            source.check.Check(frames.data(), static_cast<int>(frames.size()));
            source.detected = shows ? corrects : source.detected;
        }
        const bool negate = given || (settings.phaseCheck && source.detected);
        const bool unchanged = source.fade == 0 && !negate;
        for (std::size_t i = 0; i < mBlock && !unchanged; ++i) {
            left[i] *= 1.0F - 2.0F * Step(source.fade, negate);
        }
        Event(StreamEvent::Type::kReversed, source.negates, negate, index);
        source.negates = negate;
    }

    /// Moves a fade by a frame. @return its weight
    float Step(std::size_t& fade, bool up) const {
        if (up && fade < mFade) {
            ++fade;
        } else if (!up && fade > 0) {
            --fade;
        }
        return static_cast<float>(fade) / static_cast<float>(mFade);
    }

    static float Faded(float from, float to, float weight) {
        const auto finite = [](float sample) { return std::isfinite(sample) ? sample : 0.0F; };
        return (1.0F - weight) * finite(from) + weight * finite(to);
    }

    void Mix(std::vector<Samples>& block) {
        if (mFormat.sources == 1 || (!settings.mix && mMixFade == 0)) {
            return;
        }
        for (std::size_t i = 0; i < mBlock; ++i) {
            const float weight = Step(mMixFade, settings.mix);
            for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
                double sum = 0.0;
                for (std::size_t k = channel; k < block.size(); k += mChannels.size()) {
                    sum += static_cast<double>(block[k][i]);
                }
                const float mixed =
                    mS16 ? internal::LimitMixS16(sum) : static_cast<float>(internal::LimitMix(sum));
                block[channel][i] = Faded(block[channel][i], mixed, weight);
            }
        }
    }

    /// The sample `delay` before sample `at`.
    static float Delayed(const Samples& samples, std::size_t at, std::size_t delay) {
        return at < delay ? 0.0F : samples[at - delay];
    }

    Samples DelayedBlock(const Channel& channel) const {
        Samples block;
        for (std::size_t i = mReceived - mBlock; i < mReceived; ++i) {
            block.push_back(Delayed(channel.mixed, i, mDelay));
        }
        return block;
    }

    std::vector<Samples> Suppressed() {
        const bool wanted = settings.suppression.has_value();
        std::vector<Samples> blocks;
        for (const auto& channel : mChannels) {
            blocks.push_back(DelayedBlock(*channel));
        }
        if (!wanted && mSuppressionFade == 0) {
            mFilled = 0;
            return blocks;
        }
        const bool audible = wanted && mFilled >= mDelay;
        const bool whole = audible && mSuppressionFade == mFade;
        Samples weights;
        for (std::size_t i = 0; i < mBlock; ++i) {
            weights.push_back(Step(mSuppressionFade, audible));
        }
        for (std::size_t k = 0; k < blocks.size(); ++k) {
            Channel& channel = *mChannels[k];
            channel.suppressor.setLevel(mLevel);
            if (mFilled == 0) {
                Restart(channel);
            }
            const Samples suppressed = Suppress(channel, blocks[k]);
            for (std::size_t i = 0; i < mBlock; ++i) {
                blocks[k][i] =
                    whole ? suppressed[i] : Faded(blocks[k][i], suppressed[i], weights[i]);
            }
        }
        mFilled += mBlock;
        return blocks;
    }

    static void Restart(Channel& channel) {
        channel.suppressor.Reset();
        if (channel.toSuppressor) {
            channel.toSuppressor->Reset();
            channel.fromSuppressor->Reset();
        }
        channel.resampled.clear();
        channel.gains.clear();
    }

    static float Bounded(float sample) {
        return std::isfinite(sample) ? std::clamp(sample, -1e6F, 1e6F) : 0.0F;
    }

    static float UpperBandEnergy(const Samples& block) {
        float energy = 0.0F;
        for (std::size_t i = 3; i < block.size(); ++i) {
            const float difference =
                block[i] - 3.0F * block[i - 1] + 3.0F * block[i - 2] - block[i - 3];
            energy += difference * difference;
        }
        return energy;
    }

    Samples Suppress(Channel& channel, const Samples& delayed) const {
        Samples in = LastBlock(channel.mixed);
        if (channel.toSuppressor) {
            std::transform(in.begin(), in.end(), in.begin(), Bounded);
            Samples resampled(kBlock);
            channel.toSuppressor->Process(in, resampled);
            in = resampled;
        }
        std::vector<short> shorts(kBlock);
        channel.toS16.Convert(in, shorts);
        channel.suppressor.Process(reinterpret_cast<const char*>(shorts.data()),
                                   reinterpret_cast<char*>(shorts.data()));
        Samples suppressed;
        for (const short sample : shorts) {
            suppressed.push_back(static_cast<float>(sample) / 32768.0F);
        }
        if (!channel.toSuppressor) {
            return suppressed;
        }
        channel.resampled.insert(channel.resampled.end(), in.begin(), in.end());
        Samples out(mBlock);
        if (mPlan.down == 1) {
            channel.fromSuppressor->Process(suppressed, out);
            return out;
        }
        Samples aligned;
        for (std::size_t i = channel.resampled.size() - kBlock; i < channel.resampled.size(); ++i) {
            aligned.push_back(Delayed(channel.resampled, i, internal::kSuppressorDelay));
        }
        const float last = channel.gains.empty() ? 1.0F : channel.gains.back();
        const float kept = std::min(
            std::sqrt((UpperBandEnergy(suppressed) + 1e-9F) / (UpperBandEnergy(aligned) + 1e-9F)),
            1.0F);
        const float next = settings.highBand ? kept : 0.0F;
        for (std::size_t i = 0; i < kBlock; ++i) {
            const float gain = last + (next - last) * static_cast<float>(i + 1) / 320.0F;
            channel.gains.push_back(gain);
            suppressed[i] -= gain * aligned[i];
        }
        channel.fromSuppressor->Process(suppressed, out);
        // The resampler back delays by 64 samples of the suppressor.
        const std::size_t start = channel.gains.size() - kBlock;
        for (std::size_t i = 0; i < mBlock; ++i) {
            const std::size_t at = start + i / static_cast<std::size_t>(mPlan.down);
            const float gain = at < 64 ? 1.0F : channel.gains[at - 64];
            out[i] += gain * Bounded(delayed[i]);
        }
        return out;
    }

    void ApplyGain(Channel& channel, Samples& samples, bool first) const {
        if (first) {
            channel.gainTo = settings.gain;
            channel.gainFade = mFade;
        }
        if (channel.gainFade == mFade && settings.gain != channel.gainTo) {
            channel.gainFrom = channel.gainTo;
            channel.gainTo = settings.gain;
            channel.gainFade = 0;
        }
        const bool whole = channel.gainFade == mFade;
        for (float& sample : samples) {
            const float to = Curve(sample, channel.gainTo);
            sample = whole
                         ? to
                         : Faded(Curve(sample, channel.gainFrom), to, Step(channel.gainFade, true));
        }
    }

    float Curve(float sample, std::optional<float> gain) const {
        if (!gain) {
            return sample;
        }
        AudioGain curve;
        curve.SetGain(*gain);
        if (mS16) {
            short value = internal::NearestS16(sample);
            curve.Process(reinterpret_cast<const char*>(&value), sizeof(value), SAMPLE_FMT_S16);
            return static_cast<float>(value) / 32768.0F;
        }
        curve.Process(reinterpret_cast<const char*>(&sample), sizeof(sample), SAMPLE_FMT_FLT);
        return sample;
    }

    static constexpr std::size_t kBlock = internal::kBlockSamples;

    StreamFormat mFormat;
    bool mS16;
    internal::RatePlan mPlan;
    std::size_t mBlock;
    std::size_t mDelay = 0;
    std::size_t mFade;
    std::vector<Samples> mIn;
    std::vector<std::unique_ptr<Channel>> mChannels;
    std::vector<Source> mSources;
    std::unique_ptr<internal::MusicDetection> mMusic;
    StreamSettings mBefore;
    std::size_t mReceived = 0;
    std::size_t mPending = 0;
    std::size_t mMixFade = 0;
    std::size_t mSuppressionFade = 0;
    std::size_t mFilled = 0;
    int mLevel = 0;
};

}  // namespace audio_filter
