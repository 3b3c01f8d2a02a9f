#include "host/batch/batch.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "host/batch/batch_progress.h"
#include "host/failure.h"
#include "host/interrupt.h"
#include "host/log_file.h"

Batch::Batch(CleanJob common, std::vector<PlannedFile> files, Listener listener)
    : mCommon(std::move(common)),
      mFiles(std::move(files)),
      mListener(std::move(listener)),
      mResults(mFiles.size()) {}

void Batch::Run(std::size_t jobs, const ProgressOutput& progress) {
    SettlePlanned();
    std::vector<std::size_t> toClean;
    std::vector<std::int64_t> bytes;
    for (std::size_t i = 0; i < mFiles.size(); ++i) {
        if (mFiles[i].state == PlannedFile::State::kToClean) {
            toClean.push_back(i);
            bytes.push_back(mFiles[i].bytes);
        }
    }
    BatchProgress display(progress, bytes);
    std::mutex listening;
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t i = next++; i < toClean.size() && !SignalArrived(); i = next++) {
            ProgressOutput share;
            share.report = [&display, i](double done) { display.Report(i, done); };
            Clean(toClean[i], share);
            display.Complete(i);
            const BatchResult& result = mResults[toClean[i]];
            if (result.state != BatchResult::State::kNotReached) {
                const std::lock_guard<std::mutex> lock(listening);
                mListener(mFiles[toClean[i]], result);
            }
        }
    };
    std::vector<std::jthread> workers;
    for (std::size_t i = 1; i < std::min(jobs, toClean.size()); ++i) {
        workers.emplace_back(work);
    }
    work();
}

/// The results of the files that are not to be cleaned.
void Batch::SettlePlanned() {
    for (std::size_t i = 0; i < mFiles.size(); ++i) {
        const PlannedFile& file = mFiles[i];
        if (file.state == PlannedFile::State::kToClean) {
            continue;
        }
        if (file.state == PlannedFile::State::kSkipped) {
            mResults[i].state = BatchResult::State::kSkipped;
        } else {
            mResults[i].state = BatchResult::State::kFailed;
            mResults[i].error = Failure(file.input, file.reason).what();
        }
        mListener(file, mResults[i]);
    }
}

void Batch::Clean(std::size_t file, const ProgressOutput& progress) {
    const LogLabel label(mFiles[file].input);
    BatchResult& result = mResults[file];
    try {
        CleanJob job = JobOf(file);
        std::error_code error;
        const std::filesystem::path folder = std::filesystem::path(job.output).parent_path();
        std::filesystem::create_directories(folder, error);  // the output reports why it failed
        result.report = ::Clean(job, progress);
        result.state = BatchResult::State::kCleaned;
    } catch (const std::exception& failure) {
        if (!Interrupted()) {
            result.state = BatchResult::State::kFailed;
            result.error = failure.what();
        }
    }
}

CleanJob Batch::JobOf(std::size_t file) {
    CleanJob job = mCommon;
    job.inputs.insert(job.inputs.begin(), {mFiles[file].input, AV_SOURCE_MICROPHONE});
    job.output = mFiles[file].output;
    job.reading.warn = [&result = mResults[file]](const std::string& line) {
        result.warnings.push_back(line);
    };
    return job;
}
