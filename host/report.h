#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "host/audio_format.h"
#include "host/filter_record.h"
#include "host/filter_settings.h"
#include "host/level_meter.h"

/// The summary of a cleaned recording.
struct Report {
    std::vector<std::string> inputs;
    std::string output;
    AudioFormat format;
    double duration;  ///< s
    double elapsed;   ///< s
    double loudnessBefore;
    double loudnessAfter;
    double peakBefore;
    double peakAfter;
    WindowLevels levels;
    FilterSettings settings;  ///< at the start
    FilterRecord record;
    std::vector<std::string> conversions;  ///< of inputs to the format of the first
    double music;                          ///< s in which music was detected
    double phaseCorrected;                 ///< s, all sources
};

/// Prints a table.
void PrintTable(std::ostream& out, const Report& report);

/// Prints the same as one JSON object; minus infinity becomes null.
void PrintJson(std::ostream& out, const Report& report);
