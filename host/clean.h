#pragma once

#include <iosfwd>
#include <string>

#include "host/report.h"
#include "host/unit_chain.h"

/// A recording to be cleaned.
struct CleanJob {
    std::string input;
    std::string output;
    ChainSettings settings;
    int blockMs = 10;  ///< 1..1000, how much the units get at a time
};

/// Cleans it: the output has the rate, channels and length of the input and appears when it is
/// whole. Throws Failure, and then leaves nothing.
/// @param progress where the progress bar goes; null for none
Report Clean(const CleanJob& job, std::ostream* progress);
