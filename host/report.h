#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "host/audio_format.h"
#include "host/filter_record.h"
#include "host/filter_settings.h"
#include "host/level_meter.h"

/// What was done to a recording, and what it did.
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
    std::vector<std::string> conversions;  ///< of inputs that did not fit the first
    double music;                          ///< s judged music
    double phaseCorrected;                 ///< s, of all sources
};

/// For people: a short table.
void PrintTable(std::ostream& out, const Report& report);

/// For programs: the same as one JSON object. Minus infinity is null.
void PrintJson(std::ostream& out, const Report& report);
