#include "host/clean_command.h"

#include <CLI/CLI.hpp>
#include <ostream>
#include <sstream>
#include <string>

#include "host/batch/batch_command.h"
#include "host/clean.h"
#include "host/clean_arguments.h"
#include "host/failure.h"
#include "host/report.h"

namespace {

/// Cleans the files of the arguments into one output.
int CleanIntoOne(const Arguments& arguments, const Console& console) {
    CleanJob job = JobOf(arguments);
    std::string warnings;
    job.reading.warn = [&](const std::string& line) {
        warnings += "audio-filter: warning: " + line + "\n";
    };
    ProgressOutput progress = console.progress;
    progress.label = "audio-filter: " + Failure::Printable(job.inputs.front().path);
    if (arguments.quiet || job.log == "-") {  // a bar would cut log lines
        progress.out = nullptr;
    }
    const Report report = Clean(job, progress);
    console.err << warnings;
    std::ostringstream summary;
    if (arguments.json) {
        PrintJson(summary, report);
    } else if (!arguments.quiet && !arguments.noStats) {
        PrintTable(summary, report);
    }
    (job.output == "-" ? console.err : console.out) << summary.str();
    return kDone;
}

/// The option that has an effect only on many files; null for none.
const char* OptionForMany(const Arguments& arguments) {
    return arguments.recursive      ? "--recursive"
           : !arguments.to.empty()  ? "--to"
           : arguments.skipExisting ? "--skip-existing"
           : arguments.dryRun       ? "--dry-run"
           : arguments.jobs > 0     ? "--jobs"
                                    : nullptr;
}

}  // namespace

int RunClean(const Arguments& arguments, const Console& console) {
    const bool many = !arguments.outputDir.empty() || !arguments.suffix.empty();
    if (many && !arguments.output.empty()) {
        throw CLI::ValidationError("--output", "names one output: omit --output-dir and --suffix");
    }
    if (many && !(arguments.job.reportPage + arguments.job.spectrogram).empty()) {
        throw CLI::ValidationError("--report", "and --spectrogram show one output");
    }
    if (many) {
        return CleanMany(arguments, console);
    }
    if (arguments.files.size() > 1) {
        throw CLI::ValidationError(
            "FILE",
            "several files need --output-dir or --suffix; to mix them into one output, use "
            "'audio-filter mix' or --source");
    }
    if (const char* const option = OptionForMany(arguments)) {
        throw CLI::ValidationError(option, "needs --output-dir or --suffix");
    }
    if (arguments.output.empty()) {
        throw CLI::ValidationError("--output", "is required, or --output-dir, or --suffix");
    }
    return CleanIntoOne(arguments, console);
}

int RunMix(const Arguments& arguments, const Console& console) {
    if (arguments.files.size() + arguments.sources.size() < 2) {
        throw CLI::ValidationError("FILE", "at least two sources are required");
    }
    return CleanIntoOne(arguments, console);
}
