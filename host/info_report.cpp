#include "host/info_report.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <ostream>

#include "host/channels.h"
#include "host/failure.h"
#include "host/media_extensions.h"
#include "host/report.h"

namespace {

template <typename... Args>
std::string Line(const char* format, Args... args) {
    char text[256];
    std::snprintf(text, sizeof(text), format, args...);
    return std::string(text) + "\n";
}

const char* SamplesName(SampleFormat samples) {
    return samples == SampleFormat::kS16 ? "16-bit" : "float";
}

std::string LengthText(const FileInfo& info) {
    if (!info.frames) {
        return "length not stated";
    }
    char text[80];
    std::snprintf(text, sizeof(text), "%lld frames, %.2f s", static_cast<long long>(*info.frames),
                  static_cast<double>(*info.frames) / info.format.sampleRate);
    return text;
}

std::string CleaningText(const CleaningInfo& cleaning, int rate) {
    const double perMs = rate / 1000.0;
    std::string text = "  settings    " + SettingsText(cleaning.settings) + "\n";
    if (!cleaning.settings.denoiseLevel) {
        text += Line("  rate        %d Hz, nothing is resampled", rate);
    } else if (cleaning.suppressorRate == rate) {
        text += Line("  rate        noise suppressed at %d Hz, in blocks of %d frames (%.1f ms)",
                     rate, cleaning.blockFrames, cleaning.blockFrames / perMs);
    } else {
        text += Line(
            "  rate        noise suppressed at %d Hz, resampled from %d Hz, in blocks of %d frames "
            "(%.1f ms)",
            cleaning.suppressorRate, rate, cleaning.blockFrames, cleaning.blockFrames / perMs);
    }
    return text + Line("  latency     %d frames (%.1f ms), removed from the output",
                       cleaning.latency, cleaning.latency / perMs);
}

}  // namespace

void PrintInfo(std::ostream& out, const FileInfo& info) {
    std::string text = Failure::Printable(info.path) + "\n";
    if (!info.container.empty()) {
        text += "  contents    " + info.container + "; " + std::to_string(info.format.sampleRate) +
                " Hz, " + ChannelsName(info.format.channels) + ", " + LengthText(info) + "\n";
        text += info.libraryFormat.empty()
                    ? ""
                    : "  libsndfile  " + info.libraryFormat + ", " + info.libraryCodec + "\n";
        for (const std::string& stream : info.streams) {
            text += "  stream      " + stream + "\n";
        }
    }
    if (info.cleaning) {
        text += CleaningText(*info.cleaning, info.format.sampleRate);
        text += "  output      " + OutputExtension(info.path) + " unless another is named; " +
                std::to_string(info.format.sampleRate) + " Hz, " +
                ChannelsName(info.format.channels) + ", " + SamplesName(info.format.samples) +
                " samples\n";
    }
    for (const std::string& warning : info.warnings) {
        text += "  warning     " + warning + "\n";
    }
    out << text + (info.problem.empty() ? "" : "  problem     " + info.problem + "\n");
}

void PrintInfoJson(std::ostream& out, const FileInfo& info) {
    nlohmann::ordered_json json = {{"input", info.path}};
    if (!info.container.empty()) {
        json["container"] = info.container;
        if (!info.libraryFormat.empty()) {
            json["libsndfile"] = {{"format", info.libraryFormat}, {"codec", info.libraryCodec}};
        }
        json["streams"] = info.streams;
        json["sample_rate_hz"] = info.format.sampleRate;
        json["channels"] = info.format.channels;
        json["frames"] = nullptr;
        json["duration_s"] = nullptr;
        if (info.frames) {
            json["frames"] = *info.frames;
            json["duration_s"] = static_cast<double>(*info.frames) / info.format.sampleRate;
        }
    }
    if (info.cleaning) {
        json["cleaning"] = {{"settings", JsonOf(info.cleaning->settings)},
                            {"suppressor_rate_hz", info.cleaning->suppressorRate},
                            {"block_frames", info.cleaning->blockFrames},
                            {"latency_frames", info.cleaning->latency},
                            {"extension", OutputExtension(info.path)},
                            {"samples", SamplesName(info.format.samples)}};
    }
    json["warnings"] = info.warnings;
    json["problem"] = nullptr;
    if (!info.problem.empty()) {
        json["problem"] = info.problem;
    }
    out << json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}
