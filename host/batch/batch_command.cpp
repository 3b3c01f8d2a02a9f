#include "host/batch/batch_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <ostream>
#include <system_error>
#include <thread>
#include <utility>

#include "host/batch/batch.h"
#include "host/batch/batch_plan.h"
#include "host/batch/batch_report.h"
#include "host/clean_arguments.h"
#include "host/failure.h"
#include "host/interrupt.h"
#include "host/job_files.h"
#include "host/log_file.h"

namespace {

BatchRequest RequestOf(const Arguments& arguments) {
    for (const std::string& file : arguments.files) {
        if (file == "-") {
            throw CLI::ValidationError("FILE", "standard input needs -o");
        }
    }
    if (arguments.files.empty()) {
        throw CLI::ValidationError("FILE", "is required");
    }
    for (const InputFile& source : CommonJob(arguments).inputs) {
        std::error_code error;
        if (source.path == "-" || std::filesystem::is_fifo(source.path, error)) {
            throw CLI::ValidationError("--source", "a pipe cannot be mixed into several files");
        }
    }
    if (arguments.suffix.find('/') != std::string::npos) {
        throw CLI::ValidationError("--suffix", "contains a '/'");
    }
    if (!arguments.raw.empty() || arguments.job.wavStream) {
        throw CLI::ValidationError(arguments.raw.empty() ? "--wav" : "--raw", "needs -o");
    }
    return {.paths = arguments.files,
            .recursive = arguments.recursive,
            .outputDir = arguments.outputDir,
            .suffix = arguments.suffix,
            .extension = arguments.to,
            .replace = arguments.force,
            .skipExisting = arguments.skipExisting};
}

/// Opens one log for all files, which their jobs then do not open.
std::optional<LogFile> OpenLog(CleanJob& common, const std::vector<PlannedFile>& files,
                               const std::string& outputDir) {
    if (common.log.empty()) {
        return std::nullopt;
    }
    for (const PlannedFile& file : files) {
        CleanJob job = common;
        job.inputs.push_back({file.input, AV_SOURCE_MICROPHONE});
        job.output = file.output;
        if (job.log != "-") {
            CheckSideFile(job, job.log);
        }
    }
    if (!outputDir.empty()) {  // which may be that of the log
        std::error_code error;
        std::filesystem::create_directories(outputDir, error);
    }
    return std::optional<LogFile>(std::in_place, std::exchange(common.log, ""), common.logLevel);
}

int ReportPlan(const std::vector<PlannedFile>& files, bool json, const Console& console) {
    PrintPlan(console.out, files, json);
    int status = kDone;
    for (const PlannedFile& file : files) {
        if (file.state == PlannedFile::State::kFailed) {
            console.err << std::string("audio-filter: ") + Failure(file.input, file.reason).what() +
                               "\n";
            status = kFailure;
        }
    }
    return status;
}

double Now() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

}  // namespace

int CleanMany(const Arguments& arguments, const Console& console) {
    CleanJob common = CommonJob(arguments);
    common.replace = arguments.force;
    const std::vector<PlannedFile> files = PlanBatch(RequestOf(arguments));
    if (files.empty()) {
        throw Failure("no recordings found");
    }
    if (arguments.dryRun) {
        return ReportPlan(files, arguments.json, console);
    }
    ProgressOutput progress = console.progress;
    progress.label = "audio-filter: " + FileCount(files.size());
    if (arguments.quiet || common.log == "-") {
        progress.out = nullptr;
    }
    std::optional<LogFile> log = OpenLog(common, files, arguments.outputDir);
    const auto listen = [&](const PlannedFile& file, const BatchResult& result) {
        if (arguments.json) {
            PrintJsonLine(console.out, file, result);
        }
    };
    Batch batch(common, files, listen);
    const double start = Now();
    batch.Run(arguments.jobs > 0 ? static_cast<std::size_t>(arguments.jobs)
                                 : std::max(1U, std::thread::hardware_concurrency()),
              progress);
    if (!arguments.json && common.summarises) {
        PrintBatchTable(console.out, batch, Now() - start);
    }
    PrintProblems(console.err, batch, SignalArrived());
    if (log) {
        log->Close();
    }
    const bool failed = std::any_of(
        batch.Results().begin(), batch.Results().end(),
        [](const BatchResult& result) { return result.state == BatchResult::State::kFailed; });
    return failed ? kFailure : kDone;
}
