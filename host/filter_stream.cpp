#include "host/filter_stream.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/failure.h"

namespace {

template <typename Sample>
char* Bytes(std::vector<Sample>& block) {
    return reinterpret_cast<char*>(block.data());
}

template <typename Sample>
int ByteCount(const std::vector<Sample>& block) {
    return static_cast<int>(block.size() * sizeof(Sample));
}

/// Cuts a block to what a call has left in it.
template <typename Sample>
void CutTo(std::vector<Sample>& block, int bytes) {
    block.resize(static_cast<std::size_t>(bytes) / sizeof(Sample));
}

template <typename Sample>
std::vector<Sample> Convert(RateConverter& converter, const std::vector<Sample>& block, bool last) {
    std::vector<float> floats(block.size());
    std::transform(block.begin(), block.end(), floats.begin(), [](Sample s) { return ToFloat(s); });
    floats = converter.Convert(floats, last);
    std::vector<Sample> converted(floats.size());
    std::transform(floats.begin(), floats.end(), converted.begin(), FromFloat<Sample>);
    return converted;
}

/// The suppressor's rate for a stream, as AudioFilter chooses it.
int SuppressorRate(int sampleRate) {
    return sampleRate > 16000 ? 32000 : sampleRate > 8000 ? 16000 : 8000;
}

/// Frames by which the suppressor's output lags: it holds 96 samples of a band back (48 at 8000
/// Hz), which are 192 (96) of the stream, and the band filters take about four. At 8000 and 16000
/// Hz its frames are half padding, and that much less is held back of what is fresh.
std::int64_t SuppressorDelay(int suppressorRate) {
    constexpr std::int64_t kBandFilters = 4;
    switch (suppressorRate) {
        case 8000: return 96 - 80 + kBandFilters;
        case 16000: return 192 - 160 + kBandFilters;
        default: return 192 + kBandFilters;
    }
}

}  // namespace

template <typename Sample>
FilterStream<Sample>::FilterStream(const FilterSettings& settings, const AudioFormat& format,
                                   std::vector<AVSourceType> sources, Sink sink)
    : mFormat(format), mSources(std::move(sources)), mSink(std::move(sink)) {
    mFilter.SetListener(this);
    mRecord.processingRate = SuppressorRate(format.sampleRate);
    Switch(settings, true);
}

template <typename Sample>
void FilterStream<Sample>::Apply(const FilterSettings& settings) {
    if (mSuppresses && !Hears(settings)) {
        Drain();
    }
    Switch(settings, false);
}

template <typename Sample>
void FilterStream<Sample>::Switch(const FilterSettings& settings, bool first) {
    const ProcessSwitchMap wanted = {{AP_DENOISE, settings.denoiseLevel.has_value()},
                                     {AP_PHASE_CHECK, settings.phaseCheck},
                                     {AP_GAIN, settings.gain.has_value()},
                                     {AP_MIXING, settings.mix && mSources.size() > 1}};
    ProcessSwitchMap switches = wanted;
    if (first) {
        const SampleFmt fmt = mFormat.kind == SampleKind::kS16 ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT;
        const int code = mFilter.Init(mFormat.sampleRate, mFormat.channels, fmt, &switches);
        if (code != 0) {
            throw Failure("the filter refused the stream, code " + std::to_string(code));
        }
    } else {
        mFilter.SetMethod(&switches);
    }
    for (const auto& [kind, on] : wanted) {
        if (on && !switches[kind]) {
            Refused("switching on " + kProcessTypeNames[kind], "not ready");
        }
    }
    ProcessParam param = {settings.gain.value_or(0.0F), settings.denoiseLevel.value_or(0)};
    if (switches[AP_GAIN] && !mFilter.SetParameter(&param, AP_GAIN)) {
        Refused("setting the gain", "false");
    }
    if (switches[AP_DENOISE] && param.level != mLevel) {
        mLevel = param.level;
        if (!mFilter.SetParameter(&param, AP_DENOISE)) {
            Refused("setting the level of noise suppression", "false");
        }
    }
    const bool suppressed = mSuppresses;
    mSuppresses = switches[AP_DENOISE] && Hears(settings);
    if (mSuppresses && !suppressed) {
        StartSuppression();
    }
}

/// Whether the suppressor gets to hear anything: a microphone, first or mixed with others.
template <typename Sample>
bool FilterStream<Sample>::Hears(const FilterSettings& settings) const {
    const auto end = settings.mix ? mSources.end() : mSources.begin() + 1;
    return settings.denoiseLevel.has_value() &&
           std::find(mSources.begin(), end, AV_SOURCE_MICROPHONE) != end;
}

/// What comes out first is what the suppressor still holds of earlier, and its delay.
template <typename Sample>
void FilterStream<Sample>::StartSuppression() {
    const int rate = mRecord.processingRate;
    mToDrop = SuppressorDelay(rate) + mSuppressed % (rate / 100);
}

template <typename Sample>
void FilterStream<Sample>::Push(Block blocks) {
    mIn += FramesOf(blocks) / static_cast<std::int64_t>(mSources.size());
    Process(std::move(blocks));
}

template <typename Sample>
void FilterStream<Sample>::Process(Block blocks) {
    const Block before = blocks;
    Block out(blocks.size() + Silence(mFormat.sampleRate / 100 + 1).size());
    int size = ByteCount(blocks);
    const int code = mFilter.Process(Bytes(blocks), Bytes(out), size, mSources, mParam, 0);
    NoteCorrections(before, blocks);
    const std::int64_t frames = FramesOf(blocks) / static_cast<std::int64_t>(mSources.size());
    if (code == 9) {
        CutTo(out, size);
        HandOff(std::move(out));
        return;
    }
    if (code != 0) {
        Refused("Process", std::to_string(code));
        out = before;
        Limit(out, frames);
        Emit(std::move(out));
        return;
    }
    CutTo(out, size);
    if (mSuppresses) {
        mSuppressed += frames;
        mToDrop -= Drop(out, mToDrop);
    }
    Emit(std::move(out));
}

/// A correction turns the sign of left samples, which nothing else does.
template <typename Sample>
void FilterStream<Sample>::NoteCorrections(const Block& before, const Block& after) {
    if (mFormat.channels != 2) {
        return;
    }
    const std::size_t perSource = before.size() / mSources.size();
    for (std::size_t start = 0; start < before.size(); start += perSource) {
        for (std::size_t i = start; i < start + perSource; i += 2) {
            if (before[i] != Sample(0) && std::isfinite(static_cast<float>(before[i]))) {
                const bool turned = (before[i] < Sample(0)) != (after[i] < Sample(0));
                mRecord.correctedFrames += turned ? static_cast<std::int64_t>(perSource / 2) : 0;
                break;
            }
        }
    }
}

template <typename Sample>
void FilterStream<Sample>::HandOff(Block block) {
    ++mRecord.handOffs;
    if (!mThere) {
        mThere.emplace(mFormat.sampleRate, mParam.audioSampleRate, mFormat.channels);
        mBack.emplace(mParam.audioSampleRate, mFormat.sampleRate, mFormat.channels);
    }
    if (mSources.size() > 1) {
        // The filter suppresses what has been resampled only after a call with one source; and one
        // source is what the mix has become.
        int size = ByteCount(block);
        mFilter.SyncProcessDelay(Bytes(block), Bytes(block), size, {AV_SOURCE_MICROPHONE});
    }
    Resampled(Convert(*mThere, block, false));
}

template <typename Sample>
void FilterStream<Sample>::Resampled(const Block& block) {
    mResampledIn += FramesOf(block);
    ProcessResampled(block);
}

/// In pieces of no more frames than a second of the stream has, which is what the filter takes.
template <typename Sample>
void FilterStream<Sample>::ProcessResampled(Block block) {
    while (!block.empty()) {
        Block piece = block;
        Drop(block, Limit(piece, mFormat.sampleRate));
        const std::int64_t frames = FramesOf(piece);
        Block out(piece.size() + Silence(mParam.audioSampleRate / 100).size());
        int size = ByteCount(piece);
        const int code = mFilter.ProcessResample(Bytes(piece), Bytes(out), size,
                                                 {AV_SOURCE_MICROPHONE}, mParam, 0);
        if (code == 12) {
            CutTo(out, size);
            mSuppressed += frames;
            mToDrop -= Drop(out, mToDrop);
        } else {
            Refused("ProcessResample", std::to_string(code));
            out = std::move(piece);
        }
        mResampledOut += Limit(out, mResampledIn - mResampledOut);
        Emit(Convert(*mBack, out, false));
    }
}

template <typename Sample>
void FilterStream<Sample>::Emit(Block block) {
    mOut += Limit(block, mIn - mOut);
    mSink(block);
}

template <typename Sample>
void FilterStream<Sample>::Finish() {
    Drain();
}

/// Silence pushes out what the suppressor holds back: its delay, and a frame that is not full yet.
template <typename Sample>
void FilterStream<Sample>::Drain() {
    if (mThere) {
        Resampled(Convert<Sample>(*mThere, {}, true));
        while (mResampledOut < mResampledIn) {
            ProcessResampled(Silence(mParam.audioSampleRate / 100));
        }
        Emit(Convert<Sample>(*mBack, {}, true));
        mThere.reset();
        mBack.reset();
    } else {
        const auto sources = static_cast<std::int64_t>(mSources.size());
        while (mSuppresses && mOut < mIn) {
            Process(Silence(mFormat.sampleRate / 100 * sources));
        }
    }
    if (mOut < mIn) {  // a frame that two conversions have rounded away
        Emit(Silence(mIn - mOut));
    }
}

template <typename Sample>
void FilterStream<Sample>::OnEvent(int code, std::string text) {
    const double seconds = static_cast<double>(mIn) / mFormat.sampleRate;
    mRecord.events.push_back({seconds, code, std::move(text)});
}

template <typename Sample>
void FilterStream<Sample>::Refused(const std::string& call, const std::string& answer) {
    ++mRecord.refused[call + ": " + answer];
}

template <typename Sample>
std::int64_t FilterStream<Sample>::FramesOf(const Block& block) const {
    return static_cast<std::int64_t>(block.size()) / mFormat.channels;
}

template <typename Sample>
std::vector<Sample> FilterStream<Sample>::Silence(std::int64_t frames) const {
    return Block(static_cast<std::size_t>(frames * mFormat.channels));
}

/// Leaves at most that many frames, and says how many.
template <typename Sample>
std::int64_t FilterStream<Sample>::Limit(Block& block, std::int64_t frames) const {
    const std::int64_t kept = std::min(frames, FramesOf(block));
    block.resize(static_cast<std::size_t>(kept * mFormat.channels));
    return kept;
}

/// Drops the first frames, up to that many, and says how many.
template <typename Sample>
std::int64_t FilterStream<Sample>::Drop(Block& block, std::int64_t frames) const {
    const std::int64_t dropped = std::min(frames, FramesOf(block));
    block.erase(block.begin(),
                block.begin() + static_cast<std::ptrdiff_t>(dropped * mFormat.channels));
    return dropped;
}

template class FilterStream<short>;
template class FilterStream<float>;
