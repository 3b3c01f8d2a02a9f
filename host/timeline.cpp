#include "host/timeline.h"

#include <algorithm>
#include <cmath>
#include <utility>

Timeline::Timeline(const CleanJob& job, const AudioFormat& format,
                   std::vector<std::vector<audio_filter::Stretch>> reversed)
    : mJob(job), mFormat(format), mReversed(std::move(reversed)) {
    mWanted = job.settings;
    mApplied.push_back({0.0, InEffect()});
    MoveTo(0);
}

bool Timeline::MoveTo(std::int64_t frame) {
    const audio_filter::StreamSettings before = ForStream();
    mFrame = frame;
    while (mChange < mJob.changes.size() && FrameOf(mJob.changes[mChange].seconds) <= frame) {
        const SettingsChange& change = mJob.changes[mChange++];
        for (const auto& [name, value] : change.values) {
            ApplySetting(mWanted, name, value);
        }
        if (FrameOf(change.seconds) > 0) {
            mApplied.push_back({change.seconds, InEffect()});
        } else {
            mApplied.back().settings = InEffect();
        }
    }
    return ForStream() != before;
}

std::optional<std::int64_t> Timeline::FramesLeft() const {
    std::optional<std::int64_t> next;
    const auto consider = [&](std::int64_t frame) {
        if (frame > mFrame && (!next || frame < *next)) {
            next = frame;
        }
    };
    if (mChange < mJob.changes.size()) {
        consider(FrameOf(mJob.changes[mChange].seconds));
    }
    for (const auto& stretches : mReversed) {
        for (const audio_filter::Stretch& stretch : stretches) {
            consider(stretch.begin);
            consider(stretch.end);
        }
    }
    return next ? std::optional(*next - mFrame) : std::nullopt;
}

audio_filter::StreamSettings Timeline::ForStream() const {
    const FilterSettings& current = mApplied.back().settings;
    audio_filter::StreamSettings settings;
    settings.suppression = current.denoiseLevel;
    settings.gain = current.gain;
    settings.mix = current.mix;
    settings.music =
        current.keepMusic ? audio_filter::MusicMode::kKeep : audio_filter::MusicMode::kIgnore;
    if (current.phaseCheck == PhaseMode::kOff) {
        return settings;
    }
    settings.phaseCheck = current.phaseCheck == PhaseMode::kLive;
    const std::size_t scanned = settings.phaseCheck ? 0 : mReversed.size();
    for (std::size_t source = 0; source < scanned; ++source) {
        const auto covers = [this](const audio_filter::Stretch& stretch) {
            return stretch.begin <= mFrame && mFrame < stretch.end;
        };
        if (std::any_of(mReversed[source].begin(), mReversed[source].end(), covers)) {
            settings.reversed = static_cast<std::uint16_t>(settings.reversed | 1U << source);
        }
    }
    return settings;
}

FilterSettings Timeline::InEffect() const {
    FilterSettings settings = mWanted;
    if (!HasMicrophone()) {
        settings.denoiseLevel.reset();
    }
    if (mFormat.channels != 2) {
        settings.phaseCheck = PhaseMode::kOff;
    } else if (settings.phaseCheck == PhaseMode::kFile && mReversed.empty()) {
        settings.phaseCheck = PhaseMode::kLive;
    }
    return settings;
}

std::vector<double> Timeline::NotReached() const {
    std::vector<double> times;
    for (std::size_t i = mChange; i < mJob.changes.size(); ++i) {
        times.push_back(mJob.changes[i].seconds);
    }
    return times;
}

std::int64_t Timeline::FrameOf(double seconds) const {
    return std::llround(seconds * mFormat.sampleRate);
}

/// Noise is suppressed only if a microphone is among the sources that are processed.
bool Timeline::HasMicrophone() const {
    const bool all = mWanted.mix;
    const auto end = all ? mJob.inputs.end() : mJob.inputs.begin() + 1;
    return std::any_of(mJob.inputs.begin(), end,
                       [](const InputFile& input) { return input.type == AV_SOURCE_MICROPHONE; });
}
