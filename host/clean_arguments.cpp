#include "host/clean_arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>

#include "host/at_option.h"
#include "host/option_values.h"
#include "host/raw_stream.h"
#include "host/terminal.h"

namespace {

void CheckCombination(const CleanJob& job, bool json) {
    constexpr std::size_t kMostInputs = 16;
    const auto piped = std::count_if(job.inputs.begin(), job.inputs.end(),
                                     [](const InputFile& input) { return input.path == "-"; });
    if (job.inputs.empty()) {
        throw CLI::ValidationError("IN", "is required");
    }
    if (job.inputs.size() > kMostInputs) {
        throw CLI::ValidationError("IN", "at most 16 sources can be mixed");
    }
    if (piped > 1) {
        throw CLI::ValidationError("IN", "standard input can be only one of the sources");
    }
    if (job.wavStream && job.output != "-") {
        throw CLI::ValidationError("--wav", "is for -o - only");
    }
    if (piped == 1 && IsInputATerminal()) {
        throw CLI::ValidationError("IN", "standard input is a terminal: redirect it");
    }
    if (job.output == "-" && IsOutputATerminal()) {
        throw CLI::ValidationError("--output",
                                   "standard output is a terminal: redirect it, or name a file");
    }
    if (job.output == "-" && json) {
        throw CLI::ValidationError("--json", "standard output carries the samples");
    }
}

}  // namespace

CleanJob JobOf(const Arguments& arguments) {
    CleanJob job = arguments.job;
    if (job.output == "/dev/stdout") {
        job.output = "-";
    }
    for (const std::string& file : arguments.files) {
        const auto type = static_cast<AVSourceType>(std::min<std::size_t>(job.inputs.size(), 3));
        job.inputs.push_back({file, type});
    }
    for (const std::string& source : arguments.sources) {
        job.inputs.push_back(*ParseSource(source));
    }
    for (InputFile& input : job.inputs) {
        input.path = input.path == "/dev/stdin" ? "-" : input.path;
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
    job.blockSizes = *BlockSizes::Parse(arguments.blockMs);
    job.raw = ParseRawFormat(arguments.raw);
    job.summarises = arguments.json || !arguments.quiet;
    job.logLevel = *ParseLogLevel(arguments.logLevel);
    CheckCombination(job, arguments.json);
    return job;
}
