#include "host/clean.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/cleaning.h"
#include "host/failure.h"
#include "host/interrupt.h"
#include "host/job_files.h"
#include "host/log_file.h"
#include "host/media/media_source.h"
#include "host/page/pictures.h"
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
Report Run(const CleanJob& job, Sources sources, SignalTap* tap, const ProgressOutput& progress) {
    std::vector<std::vector<audio_filter::Stretch>> reversed;
    if (sources.front()->Format().channels == 2 && ScansPhase(job)) {
        CleanJob silent = job;
        // Warnings are given where the files are cleaned.
        silent.reading.warn = [](const std::string&) {};
        reversed = FindReversedChannels(OpenInputs(silent), sources.front()->Format());
    }
    return std::make_unique<Cleaning<Sample>>(job, std::move(sources), std::move(reversed), tap)
        ->Run(progress);
}

/// Cleans one track. The log is open.
Report CleanTrack(const CleanJob& job, Sources sources, SignalTap* tap,
                  const ProgressOutput& progress) {
    const bool s16 = sources.front()->Format().samples == SampleFormat::kS16;
    return s16 ? Run<short>(job, std::move(sources), tap, progress)
               : Run<float>(job, std::move(sources), tap, progress);
}

/// Cleans every audio track of the first input. @return the report of the first, with a note on each other
Report CleanTracks(const CleanJob& job, Sources sources, SignalTap* tap,
                   const ProgressOutput& progress) {
    const int tracks = CountAudioTracks(job.inputs.front().path);
    CleanJob one = job;
    one.tracks = OpenMediaOutput(MediaJobOf(job));
    one.track = 1;
    Report first = CleanTrack(one, std::move(sources), tap, progress);
    for (one.track = 2; one.track <= tracks; ++one.track) {
        const Report report = CleanTrack(one, OpenInputs(one), nullptr, progress);
        char note[120];
        std::snprintf(note, sizeof(note),
                      "track %d: noise floor %.1f -> %.1f dBFS, speech %.1f -> %.1f dBFS",
                      one.track, report.levels.noiseFloorBefore, report.levels.noiseFloorAfter,
                      report.levels.speechBefore, report.levels.speechAfter);
        first.notes.emplace_back(note);
    }
    const std::vector<std::string>& notes = one.tracks->Notes();
    first.notes.insert(first.notes.end(), notes.begin(), notes.end());
    return first;
}

/// Whether each of several tracks is to be cleaned.
bool CleansAll(const CleanJob& job) {
    if (job.track == kAllTracks && !AreFiles(job)) {
        throw Failure("--track all needs a file as input");
    }
    if (job.track != kAllTracks || CountAudioTracks(job.inputs.front().path) == 1) {
        return false;
    }
    if (!IsMediaOutput(job.output)) {
        throw Failure(job.output, "holds one audio track: choose --track N");
    }
    return true;
}

}  // namespace

Report Clean(const CleanJob& wanted, const ProgressOutput& progress) {
    CleanJob job = wanted;
    const bool all = CleansAll(job);
    job.track = all ? 1 : std::max(job.track, 0);
    Sources sources = OpenInputs(job);
    job.track = all ? kAllTracks : job.track;
    std::optional<LogFile> log;
    if (!job.log.empty()) {
        if (job.log != "-") {
            CheckSideFile(job, job.log);
        }
        log.emplace(job.log, job.logLevel);
    }
    try {
        Pictures pictures(job, sources.front()->Format());
        Report report = all ? CleanTracks(job, std::move(sources), pictures.Tap(), progress)
                            : CleanTrack(job, std::move(sources), pictures.Tap(), progress);
        pictures.Write(report);
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
