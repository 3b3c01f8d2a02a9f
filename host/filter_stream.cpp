#include "host/filter_stream.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/failure.h"

namespace {

/// What is remembered of the past: 50 ms, which reaches further back than the suppressor and both
/// conversions do.
constexpr int kPastPerSecond = 20;

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
    : mFormat(format),
      mSources(std::move(sources)),
      mSink(std::move(sink)),
      mPast(mSources.size()) {
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
    ProcessParam param = {settings.gain.value_or(0.0F), settings.denoiseLevel.value_or(mLevel)};
    if (switches[AP_GAIN] && !mFilter.SetParameter(&param, AP_GAIN)) {
        Refused("setting the gain", "false");
    }
    if (switches[AP_DENOISE] && param.level != mLevel) {
        if (mFilter.SetParameter(&param, AP_DENOISE)) {
            mLevel = param.level;
        } else {
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

/// What comes out first is what the suppressor still holds of earlier, and its delay. It has to
/// hear what has been before, to go on from there instead of from silence.
template <typename Sample>
void FilterStream<Sample>::StartSuppression() {
    const int rate = mRecord.processingRate;
    mToDrop = SuppressorDelay(rate) + mSuppressed % (rate / 100);
    mToSkip = FramesOf(mPast.front());
    if (mToSkip > 0) {
        Block blocks;
        for (const Block& past : mPast) {
            blocks.insert(blocks.end(), past.begin(), past.end());
        }
        Repeat(std::move(blocks));
    }
}

template <typename Sample>
void FilterStream<Sample>::Push(Block blocks) {
    mIn += FramesOf(blocks) / static_cast<std::int64_t>(mSources.size());
    Remember(blocks);
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
        const int code =
            mFilter.SyncProcessDelay(Bytes(block), Bytes(block), size, {AV_SOURCE_MICROPHONE});
        if (code != 0) {
            Refused("SyncProcessDelay", std::to_string(code));
        }
    }
    ProcessResampled(Convert(*mThere, block, false));
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
        Emit(Convert(*mBack, out, false));
    }
}

template <typename Sample>
void FilterStream<Sample>::Emit(Block block) {
    mToSkip -= Drop(block, mToSkip);
    mOut += Limit(block, mIn - mOut);
    mSink(block);
}

template <typename Sample>
void FilterStream<Sample>::Finish() {
    Drain();
}

/// What is held back has to be pushed out. What comes next is not known yet; what has been, turned
/// round, joins on without a step.
template <typename Sample>
void FilterStream<Sample>::Drain() {
    const std::int64_t frames = std::max(1, mFormat.sampleRate / 100);
    for (std::int64_t back = 0; mSuppresses && mOut < mIn; back += frames) {
        Block blocks;
        for (const Block& past : mPast) {
            const Block reversed = Backwards(past, back, frames);
            blocks.insert(blocks.end(), reversed.begin(), reversed.end());
        }
        Repeat(std::move(blocks));
    }
    mThere.reset();
    mBack.reset();
    mToSkip = 0;
}

/// So many frames, backwards, from `back` before the latest one; silence before the first.
template <typename Sample>
std::vector<Sample> FilterStream<Sample>::Backwards(const Block& past, std::int64_t back,
                                                    std::int64_t frames) const {
    Block reversed = Silence(frames);
    const std::int64_t latest = FramesOf(past) - 1 - back;
    for (std::int64_t i = 0; i < frames && i <= latest; ++i) {
        const auto from = past.begin() + (latest - i) * mFormat.channels;
        std::copy(from, from + mFormat.channels, reversed.begin() + i * mFormat.channels);
    }
    return reversed;
}

/// Keeps the latest frames of each source.
template <typename Sample>
void FilterStream<Sample>::Remember(const Block& blocks) {
    const std::size_t perSource = blocks.size() / mPast.size();
    auto start = blocks.begin();
    for (Block& past : mPast) {
        const auto end = start + static_cast<std::ptrdiff_t>(perSource);
        past.insert(past.end(), start, end);
        Drop(past, std::max<std::int64_t>(0, FramesOf(past) - mFormat.sampleRate / kPastPerSecond));
        start = end;
    }
}

/// Sends through what only serves to run the suppressor in or out.
template <typename Sample>
void FilterStream<Sample>::Repeat(Block blocks) {
    const std::int64_t handOffs = mRecord.handOffs;
    const std::int64_t correctedFrames = mRecord.correctedFrames;
    Process(std::move(blocks));
    mRecord.handOffs = handOffs;
    mRecord.correctedFrames = correctedFrames;
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
