#include "host/report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <ostream>

#include "host/channels.h"
#include "host/failure.h"

namespace {

double Speed(const Report& report) {
    return report.duration / report.elapsed;
}

const char* SampleFormatName(SampleFormat format) {
    return format == SampleFormat::kS16 ? "16-bit" : "float";
}

std::string Joined(const std::vector<std::string>& words, const char* separator) {
    std::string joined;
    for (const std::string& word : words) {
        joined += (joined.empty() ? "" : separator) + word;
    }
    return joined;
}

template <typename... Args>
std::string Format(const char* format, Args... args) {
    char text[256];
    std::snprintf(text, sizeof(text), format, args...);
    return text;
}

/// Rounded to 1 / scale.
nlohmann::ordered_json Number(double value, double scale) {
    if (!std::isfinite(value)) {
        return nullptr;
    }
    return std::round(value * scale) / scale;
}

const char* PhaseModeName(PhaseMode mode) {
    return mode == PhaseMode::kOff ? "off" : mode == PhaseMode::kLive ? "live" : "file";
}

std::string GainText(const FilterSettings& settings) {
    return settings.gain ? Format("%.2f", static_cast<double>(*settings.gain)) : "off";
}

bool KeepsMusic(const Report& report) {
    return std::any_of(report.settings.begin(), report.settings.end(),
                       [](const SettingsAt& at) { return at.settings.keepMusic; });
}

}  // namespace

nlohmann::ordered_json JsonOf(const FilterSettings& settings) {
    nlohmann::ordered_json json;
    json["denoise_level"] = nullptr;
    if (settings.denoiseLevel) {
        json["denoise_level"] = *settings.denoiseLevel;
    }
    json["gain"] = nullptr;
    if (settings.gain) {
        json["gain"] = Number(static_cast<double>(*settings.gain), 1e6);
    }
    json["phase_check"] = PhaseModeName(settings.phaseCheck);
    json["mix"] = settings.mix;
    json["music"] = settings.keepMusic ? "keep" : "ignore";
    return json;
}

std::vector<ReportRow> ReportRows(const Report& report) {
    const WindowLevels& levels = report.levels;
    return {{"loudness", "loudness_lufs", "LUFS", report.loudnessBefore, report.loudnessAfter},
            {"noise floor", "noise_floor_dbfs", "dBFS", levels.noiseFloorBefore,
             levels.noiseFloorAfter},
            {"speech", "speech_dbfs", "dBFS", levels.speechBefore, levels.speechAfter},
            {"peak", "peak_dbfs", "dBFS", report.peakBefore, report.peakAfter}};
}

std::string SettingsText(const FilterSettings& settings) {
    std::string text =
        "suppression " +
        (settings.denoiseLevel ? Format("level %d", *settings.denoiseLevel) : std::string("off"));
    text += ", gain " + GainText(settings) + ", phase check " + PhaseModeName(settings.phaseCheck);
    text += settings.mix ? "" : ", first source alone";
    return text + (settings.keepMusic ? ", music kept" : "");
}

void PrintTable(std::ostream& out, const Report& report) {
    const FilterSettings& settings = report.settings.front().settings;
    std::string text =
        Failure::Printable(Joined(report.inputs, " + ") + " -> " + report.output) + "\n";
    text += Format("%.2f s, %d Hz, %s, %s; ", report.duration, report.format.sampleRate,
                   ChannelsName(report.format.channels).c_str(),
                   SampleFormatName(report.format.samples));
    text += Format("%.0f x real time\n", Speed(report));
    text += Format("%-13s %-5s %8s %8s %8s\n", "", "", "before", "after", "change");
    for (const ReportRow& row : ReportRows(report)) {
        text += Format("%-13s %-5s %8.1f %8.1f", row.label, row.unit, row.before, row.after);
        const double change = row.after - row.before;
        text += std::isnan(change) ? "\n" : Format(" %+8.1f\n", change);
    }
    text += "settings      " + SettingsText(settings) + "\n";
    for (std::size_t i = 1; i < report.settings.size(); ++i) {
        text += Format("from %.3f s  ", report.settings[i].seconds) +
                SettingsText(report.settings[i].settings) + "\n";
    }
    if (report.loudnessGain) {
        text += Format("applied gain  %+.1f dB\n", *report.loudnessGain);
    }
    if (report.phaseCorrected > 0.0) {
        text += Format("phase         left channel inverted for %.2f s\n", report.phaseCorrected);
    }
    if (KeepsMusic(report)) {
        text += Format("music         %.2f s\n", report.music);
    }
    for (const StreamNotice& notice : report.notices) {
        text += Format("at %.3f s    ", notice.seconds) + notice.text + "\n";
    }
    for (const std::string& note : report.notes) {
        text += "note          " + Failure::Printable(note) + "\n";
    }
    out << text;
}

nlohmann::ordered_json JsonOf(const Report& report) {
    nlohmann::ordered_json json;
    json["inputs"] = report.inputs;
    json["output"] = report.output;
    json["duration_s"] = Number(report.duration, 1e6);
    json["sample_rate_hz"] = report.format.sampleRate;
    json["channels"] = report.format.channels;
    json["samples"] = SampleFormatName(report.format.samples);
    json["speed"] = Number(Speed(report), 10.0);
    if (report.hasLevels) {
        for (const ReportRow& row : ReportRows(report)) {
            json[row.key] = {{"before", Number(row.before, 100.0)},
                             {"after", Number(row.after, 100.0)},
                             {"change", Number(row.after - row.before, 100.0)}};
        }
    }
    if (report.loudnessGain) {
        json["loudness_gain_db"] = Number(*report.loudnessGain, 100.0);
    }
    json.update(JsonOf(report.settings.front().settings));
    json["phase_corrected_s"] = Number(report.phaseCorrected, 1e6);
    json["music_s"] = Number(report.music, 1e6);
    json["changes"] = nlohmann::ordered_json::array();
    for (std::size_t i = 1; i < report.settings.size(); ++i) {
        nlohmann::ordered_json change = {{"time_s", Number(report.settings[i].seconds, 1e6)}};
        change.update(JsonOf(report.settings[i].settings));
        json["changes"].push_back(change);
    }
    json["events"] = nlohmann::ordered_json::array();
    for (const StreamNotice& notice : report.notices) {
        json["events"].push_back({{"time_s", Number(notice.seconds, 1e6)}, {"text", notice.text}});
    }
    json["notes"] = report.notes;
    return json;
}

void PrintJson(std::ostream& out, const Report& report) {
    // Paths may contain bytes that are not UTF-8.
    out << JsonOf(report).dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
               "\n";
}
