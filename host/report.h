#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "host/audio_format.h"
#include "host/level_meter.h"
#include "host/unit_chain.h"

/// What was done to a recording, and what it did.
struct Report {
    std::string input;
    std::string output;
    AudioFormat format;
    int processingRate;  ///< Hz
    double duration;     ///< s
    double elapsed;      ///< s
    double loudnessBefore;
    double loudnessAfter;
    double peakBefore;
    double peakAfter;
    WindowLevels levels;
    ChainSettings settings;
    std::optional<double> phaseCorrected;  ///< s; none where no phase check ran
};

/// For people: a short table.
void PrintTable(std::ostream& out, const Report& report);

/// For programs: the same as one JSON object. Minus infinity is null.
void PrintJson(std::ostream& out, const Report& report);
