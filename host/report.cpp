#include "host/report.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <ostream>

namespace {

struct Row {
    const char* label;
    const char* key;
    const char* unit;
    double before;
    double after;
};

std::array<Row, 4> Rows(const Report& report) {
    const WindowLevels& levels = report.levels;
    return {{{"loudness", "loudness_lufs", "LUFS", report.loudnessBefore, report.loudnessAfter},
             {"noise floor", "noise_floor_dbfs", "dBFS", levels.noiseFloorBefore,
              levels.noiseFloorAfter},
             {"speech", "speech_dbfs", "dBFS", levels.speechBefore, levels.speechAfter},
             {"peak", "peak_dbfs", "dBFS", report.peakBefore, report.peakAfter}}};
}

double Speed(const Report& report) {
    return report.duration / report.elapsed;
}

const char* SampleFormatName(SampleFormat format) {
    return format == SampleFormat::kS16 ? "16-bit" : "float";
}

bool IsSuppressed(const Report& report) {
    return report.settings.denoiseLevel.has_value();
}

/// Remarks on this run.
std::vector<std::string> Notes(const Report& report) {
    std::vector<std::string> notes = report.conversions;
    if (IsSuppressed(report) && report.record.processingRate < 32000) {
        notes.push_back("the suppressor works at 32000 Hz; at " +
                        std::to_string(report.record.processingRate) +
                        " Hz its output has gaps: convert the file to 32000 Hz first, or use "
                        "--denoise off");
    }
    return notes;
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

}  // namespace

void PrintTable(std::ostream& out, const Report& report) {
    const FilterSettings& settings = report.settings;
    const FilterRecord& record = report.record;
    out << Joined(report.inputs, " + ") << " -> " << report.output << "\n"
        << Format("%.2f s, %d Hz, %s, %s; ", report.duration, report.format.sampleRate,
                  report.format.channels == 1 ? "mono" : "stereo",
                  SampleFormatName(report.format.samples))
        << Format("%.0f x real time\n", Speed(report))
        << Format("%-13s %-5s %8s %8s %8s\n", "", "", "before", "after", "change");
    for (const Row& row : Rows(report)) {
        out << Format("%-13s %-5s %8.1f %8.1f", row.label, row.unit, row.before, row.after);
        const double change = row.after - row.before;
        out << (std::isnan(change) ? "\n" : Format(" %+8.1f\n", change));
    }
    out << Format("phase check   %s, left channel inverted for %.2f s\n",
                  settings.phaseCheck ? "on" : "off", report.phaseCorrected)
        << "suppression   "
        << (settings.denoiseLevel ? Format("level %d", *settings.denoiseLevel) : "off")
        << Format(", %lld blocks resampled to %d Hz\n", static_cast<long long>(record.handOffs),
                  record.processingRate)
        << "gain          "
        << (settings.gain ? Format("%.2f\n", static_cast<double>(*settings.gain)) : "off\n")
        << Format("music         %.2f s\n", report.music);
    for (const FilterEvent& event : record.events) {
        out << Format("event         %.3f s, %d ", event.seconds, event.code) << event.text << "\n";
    }
    for (const auto& [call, times] : record.refused) {
        out << "refused       " << times << " x " << call << "\n";
    }
    for (const std::string& note : Notes(report)) {
        out << "note          " << note << "\n";
    }
}

void PrintJson(std::ostream& out, const Report& report) {
    const FilterRecord& record = report.record;
    nlohmann::ordered_json json;
    json["inputs"] = report.inputs;
    json["output"] = report.output;
    json["duration_s"] = Number(report.duration, 1e6);
    json["sample_rate_hz"] = report.format.sampleRate;
    json["channels"] = report.format.channels;
    json["samples"] = SampleFormatName(report.format.samples);
    json["speed"] = Number(Speed(report), 10.0);
    for (const Row& row : Rows(report)) {
        json[row.key] = {{"before", Number(row.before, 100.0)},
                         {"after", Number(row.after, 100.0)},
                         {"change", Number(row.after - row.before, 100.0)}};
    }
    json["phase_check"] = report.settings.phaseCheck;
    json["phase_corrected_s"] = Number(report.phaseCorrected, 1e6);
    json["denoise_level"] = nullptr;
    if (report.settings.denoiseLevel) {
        json["denoise_level"] = *report.settings.denoiseLevel;
    }
    json["gain"] = nullptr;
    if (report.settings.gain) {
        json["gain"] = *report.settings.gain;
    }
    json["hand_offs"] = record.handOffs;
    json["processing_rate_hz"] = record.processingRate;
    json["music_s"] = Number(report.music, 1e6);
    json["events"] = nlohmann::ordered_json::array();
    for (const FilterEvent& event : record.events) {
        json["events"].push_back(
            {{"time_s", Number(event.seconds, 1e6)}, {"code", event.code}, {"text", event.text}});
    }
    json["refused"] = record.refused;
    json["notes"] = Notes(report);
    // Paths may contain bytes that are not UTF-8.
    out << json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
}
