#include "host/filter_stream.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "audio_filter/stream_rate.h"
#include "common/result_code.h"
#include "host/failure.h"

namespace {

/// The history of each source: 50 ms, longer than the memory of the suppressor and both converters.
constexpr int kHistoriesPerSecond = 20;

template <typename Sample>
char* Bytes(std::vector<Sample>& block) {
    return reinterpret_cast<char*>(block.data());
}

template <typename Sample>
int ByteCount(const std::vector<Sample>& block) {
    return static_cast<int>(block.size() * sizeof(Sample));
}

/// Truncates a block to the bytes that a call returned.
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

/// Latency of the suppressor in frames: 96 samples of a band (48 at 8000 Hz) are 192 (96) of the
/// stream, and the band filters add about four. At 8000 and 16000 Hz half of each suppressor block is
/// padding, which takes that much off the latency of the stream.
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
    if (mSuppresses && !IsSuppressed(settings)) {
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
        const SampleFmt fmt =
            mFormat.samples == SampleFormat::kS16 ? SAMPLE_FMT_S16 : SAMPLE_FMT_FLT;
        const int code = mFilter.Init(mFormat.sampleRate, mFormat.channels, fmt, &switches);
        if (code != RESULT_OK) {
            throw Failure("the filter rejected the stream with code " + std::to_string(code));
        }
    } else {
        mFilter.SetMethod(&switches);
    }
    for (const auto& [kind, on] : wanted) {
        if (on && !switches[kind]) {
            NoteRefusal("switching on " + kProcessTypeNames[kind], "not initialised");
        }
    }
    ProcessParam param = {settings.gain.value_or(0.0F), settings.denoiseLevel.value_or(mLevel)};
    if (switches[AP_GAIN] && !mFilter.SetParameter(&param, AP_GAIN)) {
        NoteRefusal("setting the gain", "rejected");
    }
    if (switches[AP_DENOISE] && param.level != mLevel) {
        if (mFilter.SetParameter(&param, AP_DENOISE)) {
            mLevel = param.level;
        } else {
            NoteRefusal("setting the suppression level", "rejected");
        }
    }
    const bool suppressed = mSuppresses;
    mSuppresses = switches[AP_DENOISE] && IsSuppressed(settings);
    if (mSuppresses && !suppressed) {
        StartSuppression();
    }
}

/// Whether noise suppression applies: it needs a microphone, alone or in the mix.
template <typename Sample>
bool FilterStream<Sample>::IsSuppressed(const FilterSettings& settings) const {
    const auto end = settings.mix ? mSources.end() : mSources.begin() + 1;
    return settings.denoiseLevel.has_value() &&
           std::find(mSources.begin(), end, AV_SOURCE_MICROPHONE) != end;
}

/// The first frames out are leftovers of earlier suppression and latency: drop them. The suppressor
/// is fed with the history first, so that it does not start from silence.
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
    if (code == RESULT_NEEDS_RESAMPLING) {
        CutTo(out, size);
        HandOff(std::move(out));
        return;
    }
    if (code != RESULT_OK) {
        NoteRefusal("Process", std::to_string(code));
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

/// Only a phase correction changes the sign of left samples.
template <typename Sample>
void FilterStream<Sample>::NoteCorrections(const Block& before, const Block& after) {
    if (mFormat.channels != 2) {
        return;
    }
    const std::size_t perSource = before.size() / mSources.size();
    for (std::size_t start = 0; start < before.size(); start += perSource) {
        for (std::size_t i = start; i < start + perSource; i += 2) {
            if (before[i] != Sample(0) && std::isfinite(static_cast<float>(before[i]))) {
                const bool inverted = (before[i] < Sample(0)) != (after[i] < Sample(0));
                mRecord.correctedFrames += inverted ? static_cast<std::int64_t>(perSource / 2) : 0;
                break;
            }
        }
    }
}

template <typename Sample>
void FilterStream<Sample>::HandOff(Block block) {
    ++mRecord.handOffs;
    if (!mToSuppressor) {
        mToSuppressor.emplace(mFormat.sampleRate, mParam.audioSampleRate, mFormat.channels);
        mFromSuppressor.emplace(mParam.audioSampleRate, mFormat.sampleRate, mFormat.channels);
    }
    if (mSources.size() > 1) {
        // ProcessResample suppresses only after a call with one source: present the mix as one.
        int size = ByteCount(block);
        const int code =
            mFilter.SyncProcessDelay(Bytes(block), Bytes(block), size, {AV_SOURCE_MICROPHONE});
        if (code != RESULT_OK) {
            NoteRefusal("SyncProcessDelay", std::to_string(code));
        }
    }
    ProcessResampled(Convert(*mToSuppressor, block, false));
}

/// In pieces of at most as many frames as one second of the stream has, the limit of the filter.
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
        if (code == RESULT_RESAMPLED) {
            CutTo(out, size);
            mSuppressed += frames;
            mToDrop -= Drop(out, mToDrop);
        } else {
            NoteRefusal("ProcessResample", std::to_string(code));
            out = std::move(piece);
        }
        Emit(Convert(*mFromSuppressor, out, false));
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

/// Pushes out what the suppressor holds. The next input is unknown; the history in reverse continues
/// the signal without a step.
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
    mToSuppressor.reset();
    mFromSuppressor.reset();
    mToSkip = 0;
}

/// `frames` frames in reverse, starting `back` frames before the latest; silence before the first.
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
        Drop(past,
             std::max<std::int64_t>(0, FramesOf(past) - mFormat.sampleRate / kHistoriesPerSecond));
        start = end;
    }
}

/// Processes blocks that only fill or flush the suppressor, and are not counted.
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
void FilterStream<Sample>::NoteRefusal(const std::string& call, const std::string& result) {
    ++mRecord.refused[call + ": " + result];
}

template <typename Sample>
std::int64_t FilterStream<Sample>::FramesOf(const Block& block) const {
    return static_cast<std::int64_t>(block.size()) / mFormat.channels;
}

template <typename Sample>
std::vector<Sample> FilterStream<Sample>::Silence(std::int64_t frames) const {
    return Block(static_cast<std::size_t>(frames * mFormat.channels));
}

/// Truncates the block to `frames` frames. @return frames left
template <typename Sample>
std::int64_t FilterStream<Sample>::Limit(Block& block, std::int64_t frames) const {
    const std::int64_t kept = std::min(frames, FramesOf(block));
    block.resize(static_cast<std::size_t>(kept * mFormat.channels));
    return kept;
}

/// Drops the first frames of the block, up to `frames`. @return frames dropped
template <typename Sample>
std::int64_t FilterStream<Sample>::Drop(Block& block, std::int64_t frames) const {
    const std::int64_t dropped = std::min(frames, FramesOf(block));
    block.erase(block.begin(),
                block.begin() + static_cast<std::ptrdiff_t>(dropped * mFormat.channels));
    return dropped;
}

template class FilterStream<short>;
template class FilterStream<float>;
