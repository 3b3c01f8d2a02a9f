#include "host/clean.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "host/cleaning.h"
#include "host/failure.h"
#include "host/interrupt.h"
#include "host/job_files.h"
#include "host/log_file.h"
#include "host/phase_pass.h"

namespace {

/// Whether the phase check is to look at the whole files at any time of the job.
bool ScansPhase(const CleanJob& job) {
    FilterSettings settings = job.settings;
    bool scans = settings.phaseCheck == PhaseMode::kFile;
    for (const SettingsChange& change : job.changes) {
        for (const auto& [name, value] : change.values) {
            ApplySetting(settings, name, value);
        }
        scans = scans || settings.phaseCheck == PhaseMode::kFile;
    }
    return scans && AreFiles(job);
}

template <typename Sample>
Report Run(const CleanJob& job, Sources sources, const ProgressOutput& progress) {
    std::vector<std::vector<audio_filter::Stretch>> reversed;
    if (sources.front()->Format().channels == 2 && ScansPhase(job)) {
        CleanJob silent = job;
        // Warnings are given where the files are cleaned.
        silent.reading.warn = [](const std::string&) {};
        reversed = FindReversedChannels(OpenInputs(silent), sources.front()->Format());
    }
    return std::make_unique<Cleaning<Sample>>(job, std::move(sources), std::move(reversed))
        ->Run(progress);
}

}  // namespace

Report Clean(const CleanJob& job, const ProgressOutput& progress) {
    Sources sources = OpenInputs(job);
    std::optional<LogFile> log;
    if (!job.log.empty()) {
        CheckLogPath(job);
        log.emplace(job.log, job.logLevel);
    }
    try {
        const bool s16 = sources.front()->Format().samples == SampleFormat::kS16;
        Report report = s16 ? Run<short>(job, std::move(sources), progress)
                            : Run<float>(job, std::move(sources), progress);
        if (log) {
            log->Close();
        }
        return report;
    } catch (const Failure&) {
        if (Interrupted()) {  // the signal may have ended a write
            throw Failure("interrupted");
        }
        throw;
    }
}
