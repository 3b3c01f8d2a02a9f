#include "host/clean_arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>

#include "host/at_option.h"
#include "host/option_values.h"
#include "host/output_options.h"
#include "host/raw_stream.h"
#include "host/terminal.h"

namespace {

std::string WithoutDevice(const std::string& path, const char* device) {
    return path == device ? "-" : path;
}

void CheckCombination(const CleanJob& job, bool json) {
    constexpr std::size_t kMostInputs = 16;
    const auto piped = std::count_if(job.inputs.begin(), job.inputs.end(),
                                     [](const InputFile& input) { return input.path == "-"; });
    if (job.inputs.empty()) {
        throw CLI::ValidationError("FILE", "is required");
    }
    if (job.output.empty()) {
        throw CLI::ValidationError("--output", "is required");
    }
    if (job.inputs.size() > kMostInputs) {
        throw CLI::ValidationError("FILE", "at most 16 sources can be mixed");
    }
    if (piped > 1) {
        throw CLI::ValidationError("FILE", "standard input can be only one of the sources");
    }
    if (job.wavStream && job.output != "-") {
        throw CLI::ValidationError("--wav", "is for -o - only");
    }
    if (piped == 1 && IsInputATerminal()) {
        throw CLI::ValidationError("FILE", "standard input is a terminal: redirect it");
    }
    if (job.output == "-" && IsOutputATerminal()) {
        throw CLI::ValidationError("--output",
                                   "standard output is a terminal: redirect it, or name a file");
    }
    if (!job.reportPage.empty() && job.reportPage == job.spectrogram) {
        throw CLI::ValidationError("--report", "and --spectrogram are two files");
    }
    if (job.output == "-" && json) {
        throw CLI::ValidationError("--json", "standard output carries the samples");
    }
}

}  // namespace

CleanJob CommonJob(const Arguments& arguments) {
    CleanJob job = arguments.job;
    for (const std::string& source : arguments.sources) {
        InputFile input = *ParseSource(source);
        input.path = WithoutDevice(input.path, "/dev/stdin");
        job.inputs.push_back(input);
    }
    ApplySetting(job.settings, "denoise", arguments.denoise);
    ApplySetting(job.settings, "gain", arguments.gain);
    ApplySetting(job.settings, "phase-check", arguments.phaseCheck);
    ApplySetting(job.settings, "mix", arguments.mix);
    ApplySetting(job.settings, "music", arguments.music);
    for (const std::string& change : arguments.changes) {
        job.changes.push_back(*ParseAt(change));
    }
    std::stable_sort(job.changes.begin(), job.changes.end(),
                     [](const auto& a, const auto& b) { return a.seconds < b.seconds; });
    job.track = ParseTrack(arguments.track).value_or(0);
    job.encoding.bitRate = ParseBitRate(arguments.bitRate);
    job.encoding.bits = ParseBits(arguments.bits);
    job.blockSizes = *BlockSizes::Parse(arguments.blockMs);
    job.raw = ParseRawFormat(arguments.raw);
    job.loudness = *ParseLoudness(arguments.loudness);
    job.summarises =
        !job.reportPage.empty() || ((arguments.json || !arguments.quiet) && !arguments.noStats);
    job.logLevel = *ParseLogLevel(arguments.logLevel);
    return job;
}

CleanJob JobOf(const Arguments& arguments) {
    CleanJob job = CommonJob(arguments);
    job.output = WithoutDevice(arguments.output, "/dev/stdout");
    job.replace = !arguments.noClobber;
    std::vector<InputFile> files;
    for (const std::string& file : arguments.files) {
        const auto type = static_cast<AVSourceType>(std::min<std::size_t>(files.size(), 3));
        files.push_back({WithoutDevice(file, "/dev/stdin"), type});
    }
    job.inputs.insert(job.inputs.begin(), files.begin(), files.end());
    CheckCombination(job, arguments.json);
    return job;
}
