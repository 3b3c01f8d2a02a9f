#include "host/batch/batch_report.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <ostream>

#include "host/failure.h"

namespace {

using Json = nlohmann::ordered_json;
using State = BatchResult::State;

/// Paths may contain bytes that are not UTF-8.
std::string LineOf(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::size_t Count(const Batch& batch, State state) {
    return static_cast<std::size_t>(
        std::count_if(batch.Results().begin(), batch.Results().end(),
                      [state](const BatchResult& result) { return result.state == state; }));
}

constexpr const char* kWhatReplaces =
    "; --force replaces outputs that exist, --skip-existing skips them";

/// Whether a file has failed because its output exists already.
bool AnyOutputExists(const Batch& batch) {
    return std::any_of(batch.Files().begin(), batch.Files().end(), [](const PlannedFile& file) {
        return file.state == PlannedFile::State::kFailed && !file.output.empty();
    });
}

std::string RowOf(const PlannedFile& file, const BatchResult& result) {
    const std::string names = Failure::Printable(file.input) +
                              (file.output.empty() ? "" : " -> " + Failure::Printable(file.output));
    char columns[128];
    if (result.state == State::kCleaned) {
        const Report& report = *result.report;
        std::snprintf(columns, sizeof(columns), "%9.2f s %7.1f %7.1f %9.1f %7.1f  ",
                      report.duration, report.loudnessBefore, report.loudnessAfter,
                      report.levels.noiseFloorBefore, report.levels.noiseFloorAfter);
        return columns + names + "\n";
    }
    const char* const word = result.state == State::kSkipped  ? "skipped"
                             : result.state == State::kFailed ? "failed"
                                                              : "not done";
    std::snprintf(columns, sizeof(columns), "%11s %33s", word, "");
    const bool isSkipped = result.state == State::kSkipped;
    return columns + (isSkipped ? Failure(file.input, file.reason).what() : names) + "\n";
}

}  // namespace

std::string FileCount(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " file" : " files");
}

void PrintPlan(std::ostream& out, const std::vector<PlannedFile>& files, bool json) {
    std::string text;
    for (const PlannedFile& file : files) {
        if (file.state == PlannedFile::State::kFailed) {
            continue;
        }
        const bool skips = file.state == PlannedFile::State::kSkipped;
        if (json) {
            text += LineOf({{"input", file.input},
                            {"output", file.output},
                            {"status", skips ? "skipped" : "planned"}});
        } else {
            text += skips ? "skip  " + std::string(Failure(file.input, file.reason).what()) + "\n"
                          : "clean " + Failure::Printable(file.input) + " -> " +
                                Failure::Printable(file.output) + "\n";
        }
    }
    out << text << std::flush;
}

void PrintJsonLine(std::ostream& out, const PlannedFile& file, const BatchResult& result) {
    Json line = {{"input", file.input}, {"output", file.output}};
    switch (result.state) {
        case State::kCleaned: line["status"] = "cleaned"; break;
        case State::kSkipped:
            line["status"] = "skipped";
            line["reason"] = file.reason;
            break;
        case State::kFailed:
            line["status"] = "failed";
            line["reason"] = result.error;
            break;
        case State::kNotReached: return;
    }
    line["warnings"] = result.warnings;
    if (result.report) {
        line.update(JsonOf(*result.report));
    }
    out << LineOf(line) << std::flush;
}

void PrintBatchTable(std::ostream& out, const Batch& batch, double elapsed) {
    char line[256];
    std::snprintf(line, sizeof(line), "%11s %15s %17s\n%11s %7s %7s %9s %7s\n", "length",
                  "loudness, LUFS", "noise floor, dBFS", "", "before", "after", "before", "after");
    std::string text = line;
    double duration = 0.0;
    for (std::size_t i = 0; i < batch.Files().size(); ++i) {
        const BatchResult& result = batch.Results()[i];
        text += RowOf(batch.Files()[i], result);
        duration += result.report ? result.report->duration : 0.0;
    }
    std::snprintf(line, sizeof(line),
                  "%s: %zu cleaned, %zu skipped, %zu failed; %.2f s of audio in %.2f s, %.0f x "
                  "real time\n",
                  FileCount(batch.Files().size()).c_str(), Count(batch, State::kCleaned),
                  Count(batch, State::kSkipped), Count(batch, State::kFailed), duration, elapsed,
                  duration / elapsed);
    out << text + line;
}

void PrintProblems(std::ostream& err, const Batch& batch, bool interrupted) {
    std::string text;
    for (const BatchResult& result : batch.Results()) {
        for (const std::string& warning : result.warnings) {
            text += "audio-filter: warning: " + warning + "\n";
        }
    }
    for (const BatchResult& result : batch.Results()) {
        text += result.state == State::kFailed ? "audio-filter: " + result.error + "\n" : "";
    }
    if (const std::size_t failed = Count(batch, State::kFailed); failed > 0) {
        text += "audio-filter: " + std::to_string(failed) + " of " +
                FileCount(batch.Files().size()) + " failed" +
                (AnyOutputExists(batch) ? kWhatReplaces : "") + "\n";
    }
    if (interrupted) {
        text += "audio-filter: interrupted after " + std::to_string(Count(batch, State::kCleaned)) +
                " of " + FileCount(batch.Files().size()) + "; --skip-existing continues there\n";
    }
    err << text;
}
