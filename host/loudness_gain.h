#pragma once

#include <string>

/// A constant gain, and why it misses its target.
struct LoudnessGain {
    double db;
    std::string note;  ///< empty if the target is met
};

/// The gain that brings a recording to a loudness, or as close to it as the true peak stays below -1 dBTP.
/// @param loudness LUFS; minus infinity where none can be measured
/// @param truePeak dBTP
/// @param target LUFS
LoudnessGain ChooseGain(double loudness, double truePeak, double target);
