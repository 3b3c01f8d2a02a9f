#include "plugins/gstreamer/element_properties.h"

#include <gst/gst.h>

#include <limits>

#include "plugins/gstreamer/clamped_param.h"

namespace audio_filter {

namespace {

constexpr auto kSetting =
    static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_CONTROLLABLE |
                             GST_PARAM_MUTABLE_PLAYING);
constexpr auto kReport = static_cast<GParamFlags>(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS);

GParamSpec* Switch(const char* name, const char* nick, const char* text, bool initial) {
    return g_param_spec_boolean(name, nick, text, static_cast<gboolean>(initial), kSetting);
}

}  // namespace

void InstallProperties(GObjectClass* type) {
    const PluginSettings initial;
    const auto install = [type](Property property, GParamSpec* spec) {
        g_object_class_install_property(type, property, spec);
    };
    install(kSuppression,
            ClampedInt("suppression", "Suppression",
                       "Level of noise suppression: 0 mild .. 3 most aggressive, -1 off",
                       kSuppressionRange, kSetting));
    install(kGainOn,
            Switch("gain-on", "Gain on", "Raise the loudness with the gain curve", initial.gainOn));
    install(kGain, ClampedFloat("gain", "Gain",
                                "Strength of the gain curve, which never exceeds full scale",
                                kGainRange, kSetting));
    install(kPhaseCheck, Switch("phase-check", "Phase check",
                                "Stereo only: detect a channel of reversed polarity and correct it",
                                initial.phaseCheck));
    install(kMusicDetection,
            Switch("music-detection", "Music detection",
                   "Suppress noise at level 0 while music is detected", initial.musicDetection));
    install(kHighBand,
            Switch("high-band", "High band", "Above 48000 Hz: keep the band above the suppressor's",
                   initial.highBand));
    install(kLatency,
            g_param_spec_uint64("latency", "Latency",
                                "Delay of the audio in ns, constant for a format; 0 before caps", 0,
                                std::numeric_limits<guint64>::max(), 0, kReport));
    install(kMusic,
            g_param_spec_boolean("music", "Music", "Whether music is detected", FALSE, kReport));
    install(kReduction,
            g_param_spec_float("reduction", "Reduction",
                               "Attenuation by noise suppression in the latest audio, in dB", 0.0F,
                               std::numeric_limits<float>::max(), 0.0F, kReport));
}

bool SetProperty(PluginSettings& settings, guint property, const GValue* value) {
    const auto isOn = [value] { return g_value_get_boolean(value) != FALSE; };
    switch (property) {
        case kSuppression: settings.suppression = g_value_get_int(value); return true;
        case kGainOn: settings.gainOn = isOn(); return true;
        case kGain: settings.gain = g_value_get_float(value); return true;
        case kPhaseCheck: settings.phaseCheck = isOn(); return true;
        case kMusicDetection: settings.musicDetection = isOn(); return true;
        case kHighBand: settings.highBand = isOn(); return true;
        default: return false;
    }
}

bool GetProperty(const PluginSettings& settings, guint property, GValue* value) {
    const auto put = [value](bool on) { g_value_set_boolean(value, static_cast<gboolean>(on)); };
    switch (property) {
        case kSuppression: g_value_set_int(value, settings.suppression); return true;
        case kGainOn: put(settings.gainOn); return true;
        case kGain: g_value_set_float(value, settings.gain); return true;
        case kPhaseCheck: put(settings.phaseCheck); return true;
        case kMusicDetection: put(settings.musicDetection); return true;
        case kHighBand: put(settings.highBand); return true;
        default: return false;
    }
}

}  // namespace audio_filter
