#pragma once

#include <cstdint>
#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "host/audio_format.h"
#include "host/level_meter.h"
#include "host/timeline.h"

/// A verdict during a stream.
struct StreamNotice {
    enum class Kind : std::uint8_t { kMusic, kReversed };

    double seconds;  ///< position in the stream
    std::string text;
    Kind kind = Kind::kMusic;
    bool on = false;  ///< whether it begins or ends
};

/// A stretch in which the left channel of a source was inverted.
struct CorrectedStretch {
    double begin;  ///< s
    double end;
    int source;
};

/// The summary of a cleaned recording.
struct Report {
    std::vector<std::string> inputs;
    std::string output;
    AudioFormat format;
    double duration;        ///< s
    double elapsed;         ///< s
    bool hasLevels = true;  ///< whether the levels have been measured
    double loudnessBefore;
    double loudnessAfter;
    double peakBefore;
    double peakAfter;
    WindowLevels levels;
    std::optional<double> loudnessGain;  ///< dB, of --loudness
    std::vector<SettingsAt> settings;    ///< at the start, then after each change
    std::vector<StreamNotice> notices;
    std::vector<std::string> notes;  ///< remarks on this run
    double music;                    ///< s in which music was detected
    double phaseCorrected;           ///< s, all sources
    std::vector<CorrectedStretch> corrected;
};

/// A level of the summary, before and after.
struct ReportRow {
    const char* label;
    const char* key;  ///< in JSON
    const char* unit;
    double before;
    double after;
};

std::vector<ReportRow> ReportRows(const Report& report);

/// The settings in words, such as "suppression level 2, gain off".
std::string SettingsText(const FilterSettings& settings);

/// The settings as a JSON object.
nlohmann::ordered_json JsonOf(const FilterSettings& settings);

/// Prints a table.
void PrintTable(std::ostream& out, const Report& report);

/// The same as a JSON object; minus infinity becomes null.
nlohmann::ordered_json JsonOf(const Report& report);

/// Prints the JSON object.
void PrintJson(std::ostream& out, const Report& report);
