#include "c/structures.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace audio_filter::internal {

namespace {

// Sizes in version 0.1, the first one.
constexpr std::size_t kFirstFormatSize =
    offsetof(audio_filter_format, finite) + sizeof(std::int32_t);
constexpr std::size_t kFirstSettingsSize =
    offsetof(audio_filter_settings, reversed) + sizeof(std::uint32_t);
constexpr std::size_t kFirstEventSize = offsetof(audio_filter_event, frame) + sizeof(std::int64_t);

bool IsWithin(double value, double least, double most) {
    return value >= least && value <= most;  // not NaN
}

std::int32_t ToInt(bool on) {
    return on ? 1 : 0;
}

/// Writes the first bytes of a structure to that of a host.
template <typename Structure>
int Fill(Structure structure, Structure* out, std::size_t size, std::size_t first) {
    if (out == nullptr) {
        return AUDIO_FILTER_ERROR_ARGUMENT;
    }
    if (size < first || size > sizeof(Structure)) {
        return AUDIO_FILTER_ERROR_SIZE;
    }
    structure.size = static_cast<std::uint32_t>(size);
    std::memcpy(out, &structure, size);
    return AUDIO_FILTER_OK;
}

/// Reads a structure of a host; members that it lacks keep their defaults.
template <typename Structure>
int Read(const Structure* given, Structure& structure, std::size_t first) {
    FillDefaults(&structure, sizeof(Structure));
    if (given == nullptr) {
        return AUDIO_FILTER_OK;
    }
    if (given->size < first || given->size > sizeof(Structure)) {
        return AUDIO_FILTER_ERROR_SIZE;
    }
    std::memcpy(&structure, given, given->size);
    return AUDIO_FILTER_OK;
}

audio_filter_settings Converted(const StreamSettings& settings) {
    return {.size = sizeof(audio_filter_settings),
            .suppression = settings.suppression.value_or(AUDIO_FILTER_OFF),
            .gain = settings.gain.value_or(AUDIO_FILTER_OFF),
            .phase_check = ToInt(settings.phaseCheck),
            .music_detection = ToInt(settings.music == MusicMode::kKeep),
            .high_band = ToInt(settings.highBand),
            .mix = ToInt(settings.mix),
            .reversed = settings.reversed};
}

}  // namespace

int FillDefaults(audio_filter_format* format, std::size_t size) {
    const StreamFormat defaults;
    return Fill<audio_filter_format>({.size = 0,
                                      .sample_rate = defaults.sampleRate,
                                      .channels = defaults.channels,
                                      .samples = AUDIO_FILTER_FLOAT,
                                      .sources = defaults.sources,
                                      .max_frames = defaults.maxFrames,
                                      .finite = 1},
                                     format, size, kFirstFormatSize);
}

int FillDefaults(audio_filter_settings* settings, std::size_t size) {
    return Fill(Converted({}), settings, size, kFirstSettingsSize);
}

int FromC(const audio_filter_format* given, StreamFormat& format) {
    audio_filter_format read;
    if (const int error = Read(given, read, kFirstFormatSize); error != AUDIO_FILTER_OK) {
        return error;
    }
    if (!IsWithin(read.finite, 0, 1)) {
        return AUDIO_FILTER_ERROR_FORMAT;
    }
    format = {.sampleRate = read.sample_rate,
              .channels = read.channels,
              .samples = static_cast<SampleFmt>(read.samples),
              .sources = read.sources,
              .maxFrames = read.max_frames,
              .finite = read.finite == 1};
    return AUDIO_FILTER_OK;
}

int FromC(const audio_filter_settings* given, StreamSettings& settings) {
    audio_filter_settings read;
    if (const int error = Read(given, read, kFirstSettingsSize); error != AUDIO_FILTER_OK) {
        return error;
    }
    StreamSettings converted;
    const double values[] = {
        static_cast<double>(read.suppression), static_cast<double>(read.gain),
        static_cast<double>(read.phase_check), static_cast<double>(read.music_detection),
        static_cast<double>(read.high_band),   static_cast<double>(read.mix),
        static_cast<double>(read.reversed)};
    int setting = AUDIO_FILTER_SUPPRESSION;
    for (const double value : values) {
        if (const int error = SetOne(setting++, value, converted); error != AUDIO_FILTER_OK) {
            return error;
        }
    }
    settings = converted;
    return AUDIO_FILTER_OK;
}

int ToC(const StreamSettings& settings, audio_filter_settings* out) {
    return Fill(Converted(settings), out, out == nullptr ? 0 : out->size, kFirstSettingsSize);
}

int ToC(const StreamEvent& event, audio_filter_event* out) {
    return Fill<audio_filter_event>({.size = 0,
                                     .type = static_cast<std::int32_t>(event.type),
                                     .on = ToInt(event.on),
                                     .source = event.source,
                                     .frame = event.frame},
                                    out, out == nullptr ? 0 : out->size, kFirstEventSize);
}

int SetOne(int setting, double value, StreamSettings& settings) {
    const bool off = value == AUDIO_FILTER_OFF;
    const auto isWhole = [value](double most) {
        return IsWithin(value, 0.0, most) && value == std::floor(value);
    };
    const bool isSwitch = isWhole(1.0);
    const bool on = value == 1.0;
    switch (setting) {
        case AUDIO_FILTER_SUPPRESSION:
            if (!off && !isWhole(3.0)) {
                return AUDIO_FILTER_ERROR_VALUE;
            }
            settings.suppression = off ? std::nullopt : std::optional(static_cast<int>(value));
            return AUDIO_FILTER_OK;
        case AUDIO_FILTER_GAIN:
            if (!off && !IsWithin(value, 0.0, 1.0)) {
                return AUDIO_FILTER_ERROR_VALUE;
            }
            settings.gain = off ? std::nullopt : std::optional(static_cast<float>(value));
            return AUDIO_FILTER_OK;
        case AUDIO_FILTER_REVERSED:
            if (!isWhole(65535.0)) {
                return AUDIO_FILTER_ERROR_VALUE;
            }
            settings.reversed = static_cast<std::uint16_t>(value);
            return AUDIO_FILTER_OK;
        case AUDIO_FILTER_PHASE_CHECK: settings.phaseCheck = on; break;
        case AUDIO_FILTER_MUSIC_DETECTION:
            settings.music = on ? MusicMode::kKeep : MusicMode::kIgnore;
            break;
        case AUDIO_FILTER_HIGH_BAND: settings.highBand = on; break;
        case AUDIO_FILTER_MIX: settings.mix = on; break;
        default: return AUDIO_FILTER_ERROR_ARGUMENT;
    }
    return isSwitch ? AUDIO_FILTER_OK : AUDIO_FILTER_ERROR_VALUE;
}

int GetOne(const StreamSettings& settings, int setting, double& value) {
    const audio_filter_settings c = Converted(settings);
    switch (setting) {
        case AUDIO_FILTER_SUPPRESSION: value = c.suppression; break;
        case AUDIO_FILTER_GAIN: value = static_cast<double>(c.gain); break;
        case AUDIO_FILTER_PHASE_CHECK: value = c.phase_check; break;
        case AUDIO_FILTER_MUSIC_DETECTION: value = c.music_detection; break;
        case AUDIO_FILTER_HIGH_BAND: value = c.high_band; break;
        case AUDIO_FILTER_MIX: value = c.mix; break;
        case AUDIO_FILTER_REVERSED: value = c.reversed; break;
        default: return AUDIO_FILTER_ERROR_ARGUMENT;
    }
    return AUDIO_FILTER_OK;
}

}  // namespace audio_filter::internal
