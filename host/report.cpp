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

const char* KindName(SampleKind kind) {
    return kind == SampleKind::kS16 ? "16-bit" : "float";
}

/// At these rates most of what the suppressor is fed is padding, and the output has gaps.
bool HasGaps(const Report& report) {
    return report.settings.denoiseLevel && report.processingRate < 32000;
}

constexpr const char* kGapsNote =
    "the suppressor is made for 32000 Hz; at this rate its output has gaps: convert the file to "
    "32000 Hz first, or use --denoise off";

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
    const ChainSettings& settings = report.settings;
    out << report.input << " -> " << report.output << "\n"
        << Format("%.2f s, %d Hz, %s, %s; ", report.duration, report.format.sampleRate,
                  report.format.channels == 1 ? "mono" : "stereo", KindName(report.format.kind))
        << Format("processed at %d Hz, %.0f x real time\n", report.processingRate, Speed(report))
        << Format("%-13s %-5s %8s %8s %8s\n", "", "", "before", "after", "change");
    for (const Row& row : Rows(report)) {
        out << Format("%-13s %-5s %8.1f %8.1f", row.label, row.unit, row.before, row.after);
        const double change = row.after - row.before;
        out << (std::isnan(change) ? "\n" : Format(" %+8.1f\n", change));
    }
    out << "phase check   ";
    if (report.phaseCorrected) {
        out << Format("left channel turned round for %.2f s\n", *report.phaseCorrected);
    } else {
        out << "off\n";
    }
    out << "suppression   "
        << (settings.denoiseLevel ? Format("level %d\n", *settings.denoiseLevel) : "off\n");
    out << "gain          "
        << (settings.gain ? Format("%.2f\n", static_cast<double>(*settings.gain)) : "off\n");
    if (HasGaps(report)) {
        out << "note          " << kGapsNote << "\n";
    }
}

void PrintJson(std::ostream& out, const Report& report) {
    nlohmann::ordered_json json;
    json["input"] = report.input;
    json["output"] = report.output;
    json["duration_s"] = Number(report.duration, 1e6);
    json["sample_rate_hz"] = report.format.sampleRate;
    json["channels"] = report.format.channels;
    json["samples"] = KindName(report.format.kind);
    json["processing_rate_hz"] = report.processingRate;
    json["speed"] = Number(Speed(report), 10.0);
    for (const Row& row : Rows(report)) {
        json[row.key] = {{"before", Number(row.before, 100.0)},
                         {"after", Number(row.after, 100.0)},
                         {"change", Number(row.after - row.before, 100.0)}};
    }
    json["phase_corrected_s"] =
        report.phaseCorrected ? Number(*report.phaseCorrected, 1e6) : nullptr;
    json["denoise_level"] = nullptr;
    if (report.settings.denoiseLevel) {
        json["denoise_level"] = *report.settings.denoiseLevel;
    }
    json["gain"] = nullptr;
    if (report.settings.gain) {
        json["gain"] = *report.settings.gain;
    }
    json["notes"] = nlohmann::ordered_json::array();
    if (HasGaps(report)) {
        json["notes"].push_back(kGapsNote);
    }
    // A path need not be UTF-8.
    out << json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
}
