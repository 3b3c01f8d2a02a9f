#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/batch/batch_plan.h"
#include "host/clean.h"
#include "host/progress_bar.h"
#include "host/report.h"

/// What has become of a planned file.
struct BatchResult {
    enum class State : std::uint8_t { kNotReached, kCleaned, kSkipped, kFailed };

    State state = State::kNotReached;
    std::string error;  ///< in one line, with the path, if kFailed
    std::vector<std::string> warnings;
    std::optional<Report> report;  ///< if kCleaned
};

/// Cleans the files of a plan, several at a time, each on a thread of its own. Goes on past failures; a signal ends it.
class Batch {
public:
    /// Called for each file that has been cleaned, has failed or is skipped, one at a time.
    using Listener = std::function<void(const PlannedFile&, const BatchResult&)>;

    /// @param common the job but for the first input and the output of each file
    Batch(CleanJob common, std::vector<PlannedFile> files, Listener listener);

    /// @param jobs files at a time, 1 or more
    void Run(std::size_t jobs, const ProgressOutput& progress);

    const std::vector<PlannedFile>& Files() const { return mFiles; }

    /// One a file.
    const std::vector<BatchResult>& Results() const { return mResults; }

private:
    void SettlePlanned();
    void Clean(std::size_t file, const ProgressOutput& progress);
    CleanJob JobOf(std::size_t file);

    CleanJob mCommon;
    std::vector<PlannedFile> mFiles;
    Listener mListener;
    std::vector<BatchResult> mResults;
};
