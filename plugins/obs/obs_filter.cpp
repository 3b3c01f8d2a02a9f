#include "plugins/obs/obs_filter.h"

#include <algorithm>
#include <array>

#include "common/result_code.h"
#include "plugins/obs/filter_settings.h"

namespace audio_filter::obs {

namespace {

constexpr int kMaxFrames = 192000;
constexpr std::uint64_t kInterruptionNs = 1'000'000'000;

/// The buffers of a block, from a frame on.
using Planes = std::array<void*, MAX_AUDIO_CHANNELS>;

Planes PlanesFrom(const obs_audio_data& audio, std::size_t frame) {
    Planes planes = {};
    for (std::size_t channel = 0; channel < planes.size(); ++channel) {
        if (std::uint8_t* plane = audio.data[channel]; plane != nullptr) {
            planes[channel] = plane + frame * sizeof(float);
        }
    }
    return planes;
}

}  // namespace

ObsFilter::ObsFilter(obs_data_t* settings, obs_source_t* source) : mSource(source) {
    if (const audio_t* audio = obs_get_audio(); audio != nullptr) {
        mSampleRate = static_cast<int>(audio_output_get_sample_rate(audio));
        mChannels = static_cast<int>(audio_output_get_channels(audio));
    }
    mRunning = mStream.Init({.sampleRate = mSampleRate,
                             .channels = mChannels,
                             .samples = SAMPLE_FMT_FLTP,
                             .maxFrames = kMaxFrames,
                             .finite = true},
                            {}) == RESULT_OK;
    const char* name = obs_source_get_name(source);
    if (mRunning) {
        mLatencyNs = audio_frames_to_ns(static_cast<std::size_t>(mSampleRate),
                                        static_cast<std::uint64_t>(Latency()));
        mDiscarded.resize(static_cast<std::size_t>(Latency()) *
                          static_cast<std::size_t>(mChannels));
        blog(LOG_INFO, "[audio_filter: '%s'] %d Hz, %d channels, latency %d frames (%.1f ms)", name,
             mSampleRate, mChannels, Latency(), LatencyMs());
    } else {
        blog(LOG_ERROR,
             "[audio_filter: '%s'] %d Hz with %d channels is not supported (8000 to 192000 Hz, 1 "
             "to 8 "
             "channels): audio passes through unchanged",
             name, mSampleRate, mChannels);
    }
    Update(settings);
    signal_handler_connect(obs_source_get_signal_handler(source), "enable", OnEnable, this);
    proc_handler_add(obs_source_get_proc_handler(source),
                     "void get_report(out int latency, out bool music, out float reduction)",
                     OnGetReport, this);
}

ObsFilter::~ObsFilter() {
    signal_handler_disconnect(obs_source_get_signal_handler(mSource), "enable", OnEnable, this);
}

void ObsFilter::Update(obs_data_t* settings) {
    const PluginSettings wanted = ReadSettings(settings, [this](const Correction& correction) {
        blog(LOG_WARNING, "[audio_filter: '%s'] %s %g is out of range (%g to %g): %g is used",
             obs_source_get_name(mSource), correction.name, correction.given, correction.lowest,
             correction.highest, correction.used);
    });
    mStream.SetSettings(ToStreamSettings(wanted));
}

void ObsFilter::Process(obs_audio_data& audio) {
    if (!mRunning) {
        return;
    }
    if (IsInterrupted(audio)) {
        DiscardPending();
    }
    for (std::uint32_t done = 0; done < audio.frames;) {
        const Planes planes = PlanesFrom(audio, done);
        const int frames =
            static_cast<int>(std::min<std::uint32_t>(audio.frames - done, kMaxFrames));
        if (mStream.Process(planes.data(), planes.data(), frames) != RESULT_OK) {
            return;  // a plane is missing: the block stays as it is
        }
        done += static_cast<std::uint32_t>(frames);
    }
    MoveTimestamp(audio);
}

void ObsFilter::LogEvents() {
    StreamEvent event;
    while (mStream.NextEvent(event)) {
        const char* name = obs_source_get_name(mSource);
        if (event.type == StreamEvent::Type::kMusic) {
            blog(LOG_INFO, "[audio_filter: '%s'] music %s", name, event.on ? "detected" : "ended");
        } else if (event.type == StreamEvent::Type::kReversed) {
            blog(LOG_INFO, "[audio_filter: '%s'] left channel %s", name,
                 event.on ? "reversed: its polarity is inverted" : "no longer inverted");
        }
    }
}

double ObsFilter::LatencyMs() const {
    return mRunning ? 1000.0 * Latency() / mSampleRate : 0.0;
}

bool ObsFilter::DetectsMusic() const {
    const StreamSettings settings = mStream.Settings();
    return settings.music == MusicMode::kKeep && settings.suppression.has_value();
}

void ObsFilter::OnEnable(void* filter, calldata_t* /*data*/) {
    static_cast<ObsFilter*>(filter)->mSwitched = true;
}

void ObsFilter::OnGetReport(void* filter, calldata_t* data) {
    const ObsFilter& self = *static_cast<const ObsFilter*>(filter);
    calldata_set_int(data, "latency", self.Latency());
    calldata_set_bool(data, "music", self.IsMusic());
    calldata_set_float(data, "reduction", self.Reduction());
}

/// Whether what is pending belongs to other sound: the filter was off in between, or time jumped.
bool ObsFilter::IsInterrupted(const obs_audio_data& audio) {
    const std::uint64_t expected = mNextTimestamp;
    mNextTimestamp =
        audio.timestamp + audio_frames_to_ns(static_cast<std::size_t>(mSampleRate), audio.frames);
    const std::uint64_t jump =
        std::max(audio.timestamp, expected) - std::min(audio.timestamp, expected);
    return mSwitched.exchange(false) || (expected != 0 && jump > kInterruptionNs);
}

void ObsFilter::DiscardPending() {
    Planes planes = {};
    for (std::size_t channel = 0; channel < static_cast<std::size_t>(mChannels); ++channel) {
        planes[channel] = mDiscarded.data() + channel * static_cast<std::size_t>(Latency());
    }
    while (mStream.Drain(planes.data(), Latency()) > 0) {
    }
}

/// A timestamp within the latency of 0 stays at 0.
void ObsFilter::MoveTimestamp(obs_audio_data& audio) const {
    audio.timestamp -= std::min(audio.timestamp, mLatencyNs);
}

}  // namespace audio_filter::obs
