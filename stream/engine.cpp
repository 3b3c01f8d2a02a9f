#include "stream/engine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "stream/fade.h"
#include "stream/mixer.h"
#include "stream/packed_settings.h"

namespace audio_filter {

using namespace internal;

namespace {

constexpr int kInitialLevel = 0;

/// 10 ms.
std::size_t FadeFrames(const StreamFormat& format) {
    return static_cast<std::size_t>(format.sampleRate / 100);
}

/// Of a block, whose length is a multiple of 16. Partial sums let the compiler vectorise.
double Energy(std::span<const float> block) {
    std::array<float, 16> sums = {};
    for (std::size_t at = 0; at < block.size(); at += sums.size()) {
        for (std::size_t i = 0; i < sums.size(); ++i) {
            sums[i] += block[at + i] * block[at + i];
        }
    }
    return static_cast<double>(std::accumulate(sums.begin(), sums.end(), 0.0F));
}

}  // namespace

Stream::Engine::Channel::Channel(RatePlan plan, bool s16, std::size_t fadeFrames,
                                 std::uint32_t seed)
    : suppression(plan, kInitialLevel, seed),
      unsuppressed(suppression.Delay(), plan.BlockFrames()),
      gain(s16, fadeFrames),
      delayed(plan.BlockFrames()),
      suppressed(plan.BlockFrames()),
      out(plan.BlockFrames()) {}

Stream::Engine::Engine(const StreamFormat& format, const StreamSettings& settings)
    : mFormat(format),
      mPlan(RatePlan::For(format.sampleRate)),
      mLayout(format),
      mBlock(mPlan.BlockFrames()),
      mMusic(format.sampleRate),
      mMixed(mBlock),
      mWeights(mBlock),
      mMixFade(FadeFrames(format)),
      mSuppressionFade(FadeFrames(format)),
      mSettings(Pack(settings)) {
    const auto channels = static_cast<std::size_t>(format.channels);
    const auto sources = static_cast<std::size_t>(format.sources);
    const std::size_t fadeFrames = FadeFrames(format);
    mIn.resize(sources * channels * mBlock);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        mChannels.emplace_back(mPlan, IsS16(format.samples), fadeFrames,
                               static_cast<std::uint32_t>(channel + 2));
    }
    mDelay = mChannels[0].suppression.Delay();
    if (channels == 2) {
        mPolarities.assign(sources, Polarity(format.sampleRate, mPlan, fadeFrames));
    }
}

void Stream::Engine::Process(const void* const* in, void* const* out, std::size_t frames) {
    const auto sources = static_cast<std::size_t>(mFormat.sources);
    for (std::size_t done = 0; done < frames;) {
        const std::size_t count = std::min(mBlock - mPosition, frames - done);
        for (std::size_t source = 0; source < sources; ++source) {
            for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
                const std::span<float> block = In(source, channel).subspan(mPosition, count);
                if (in != nullptr) {
                    mLayout.Read(in + source * mLayout.Buffers(), done, channel, block);
                    if (mFormat.finite) {
                        std::transform(block.begin(), block.end(), block.begin(), FiniteOr0);
                    }
                } else {
                    std::fill(block.begin(), block.end(), 0.0F);
                }
            }
        }
        for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
            const std::span<const float> block = mChannels[channel].out;
            mLayout.Write(block.subspan(mPosition, count), channel, out, done);
        }
        done += count;
        mPosition += count;
        if (mPosition == mBlock) {
            ProcessBlock();
            mPosition = 0;
        }
    }
    mPending = Latency();
}

int Stream::Engine::Drain(void* const* out, int frames) {
    const std::size_t count = std::min(static_cast<std::size_t>(frames), mPending);
    const std::size_t left = mPending - count;
    Process(nullptr, out, count);
    mPending = left;
    return static_cast<int>(count);
}

void Stream::Engine::SetSettings(const StreamSettings& settings) {
    mSettings = Pack(settings);
}

bool Stream::Engine::ReplaceSettings(const StreamSettings& expected,
                                     const StreamSettings& settings) {
    std::uint64_t packed = Pack(expected);
    return mSettings.compare_exchange_strong(packed, Pack(settings));
}

StreamSettings Stream::Engine::Settings() const {
    return Unpack(mSettings);
}

std::span<float> Stream::Engine::In(std::size_t source, std::size_t channel) {
    return std::span(mIn).subspan((source * mChannels.size() + channel) * mBlock, mBlock);
}

void Stream::Engine::ProcessBlock() {
    const StreamSettings settings = Settings();
    mStarted ? Report(settings) : Start(settings);
    CorrectPolarity(settings);
    Mix(settings.mix);
    DetectMusic(settings);
    SetSuppression(settings);
    for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
        mChannels[channel].unsuppressed.Process(In(0, channel), mChannels[channel].delayed);
    }
    SuppressNoise(settings.suppression.has_value());
    Output(settings);
    mCurrent = settings;
    mReceived += static_cast<std::int64_t>(mBlock);
}

/// Nothing is faded at the start of a stream.
void Stream::Engine::Start(const StreamSettings& settings) {
    mStarted = true;
    mCurrent = settings;
    mMixFade.Start(settings.mix);
    mSuppressionFade.Start(settings.suppression.has_value());
    mFilled = settings.suppression ? mDelay : 0;
    for (Channel& channel : mChannels) {
        channel.gain.Start(settings.gain);
    }
    for (std::size_t source = 0; source < mPolarities.size(); ++source) {
        const bool negate = (settings.reversed >> source & 1) != 0;
        mPolarities[source].Start(negate);
        mReversed |= (negate ? 1U : 0U) << source;
    }
}

void Stream::Engine::Report(const StreamSettings& settings) {
    using Type = StreamEvent::Type;
    const auto report = [this](Type type, bool before, bool now) {
        if (before != now) {
            Report(type, now);
        }
    };
    report(Type::kSuppression, mCurrent.suppression.has_value(), settings.suppression.has_value());
    report(Type::kGain, mCurrent.gain.has_value(), settings.gain.has_value());
    report(Type::kPhaseCheck, mCurrent.phaseCheck, settings.phaseCheck);
    report(Type::kMixing, mCurrent.mix, settings.mix);
}

void Stream::Engine::Report(StreamEvent::Type type, bool on, std::size_t source) {
    mEvents.Push({type, on, static_cast<int>(source), mReceived});
}

void Stream::Engine::CorrectPolarity(const StreamSettings& settings) {
    for (std::size_t source = 0; source < mPolarities.size(); ++source) {
        Polarity& polarity = mPolarities[source];
        if (settings.phaseCheck) {
            polarity.Check(In(source, 0), In(source, 1));
        }
        const bool negated = polarity.Negates();
        const bool given = (settings.reversed >> source & 1) != 0;
        polarity.Apply(In(source, 0), given || (settings.phaseCheck && polarity.Detected()));
        if (polarity.Negates() != negated) {
            mReversed ^= 1U << source;
            Report(StreamEvent::Type::kReversed, !negated, source);
        }
    }
}

/// Mixes all sources into the first.
void Stream::Engine::Mix(bool mix) {
    if (mFormat.sources == 1 || (!mix && mMixFade.IsAt0())) {
        return;
    }
    const auto sources = static_cast<std::size_t>(mFormat.sources);
    const bool s16 = IsS16(mFormat.samples);
    mMixFade.Advance(mix, mWeights);
    for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
        for (std::size_t i = 0; i < mBlock; ++i) {
            double sum = 0.0;
            for (std::size_t source = 0; source < sources; ++source) {
                sum += static_cast<double>(In(source, channel)[i]);
            }
            mMixed[i] = s16 ? LimitMixS16(sum) : static_cast<float>(LimitMix(sum));
        }
        Crossfade(In(0, channel), mMixed, mWeights, In(0, channel));
    }
}

void Stream::Engine::DetectMusic(const StreamSettings& settings) {
    const bool detects = settings.music == MusicMode::kKeep && settings.suppression;
    const bool music = detects && mMusic.Process(In(0, 0));
    if (mIsMusic != music) {
        mIsMusic = music;
        Report(StreamEvent::Type::kMusic, music);
    }
}

void Stream::Engine::SetSuppression(const StreamSettings& settings) {
    const int level = mIsMusic ? 0 : settings.suppression.value_or(mLevel);
    if (level != mLevel) {
        mLevel = level;
        for (Channel& channel : mChannels) {
            channel.suppression.SetLevel(level);
        }
    }
    for (Channel& channel : mChannels) {
        channel.suppression.KeepBandAbove(settings.highBand);
    }
}

/// Leaves the block for the output, suppressed or not, in Channel::out.
void Stream::Engine::SuppressNoise(bool wanted) {
    if (!wanted && mSuppressionFade.IsAt0()) {
        mFilled = 0;
        mReduction = 0.0F;
        for (Channel& channel : mChannels) {
            channel.out = channel.delayed;
        }
        return;
    }
    const bool starts = mFilled == 0;
    const bool audible = wanted && mFilled >= mDelay;
    mFilled += mBlock;
    const bool faded = audible && mSuppressionFade.IsAt1();
    mSuppressionFade.Advance(audible, mWeights);
    for (std::size_t channel = 0; channel < mChannels.size(); ++channel) {
        Channel& own = mChannels[channel];
        if (starts) {
            own.suppression.Reset();
        }
        own.suppression.Process(In(0, channel), own.delayed, own.suppressed);
        if (faded) {
            std::copy(own.suppressed.begin(), own.suppressed.end(), own.out.begin());
        } else {
            Crossfade(own.delayed, own.suppressed, mWeights, own.out);
        }
    }
    Measure();
}

void Stream::Engine::Measure() {
    double before = 0.0;
    double after = 0.0;
    for (const Channel& channel : mChannels) {
        before += Energy(channel.delayed);
        after += Energy(channel.out);
    }
    if (!std::isfinite(before)) {
        return;
    }
    constexpr double kSilence = 1e-10;  // one step of 16 bits in a few samples of the block
    const double ratio = (before + kSilence) / (after + kSilence);
    mReduction = ratio > 1.0 ? static_cast<float>(10.0 * std::log10(ratio)) : 0.0F;
}

void Stream::Engine::Output(const StreamSettings& settings) {
    for (Channel& channel : mChannels) {
        channel.gain.Process(channel.out, settings.gain);
    }
}

}  // namespace audio_filter
