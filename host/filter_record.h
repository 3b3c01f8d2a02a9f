#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// What the filter's listener heard.
struct FilterEvent {
    double seconds;  ///< of the stream
    int code;
    std::string text;
};

/// What became of the calls of a filter.
struct FilterRecord {
    std::vector<FilterEvent> events;
    std::map<std::string, int> refused;  ///< calls with their answers, and how often
    std::int64_t handOffs = 0;           ///< blocks resampled for the suppressor and back
    int processingRate = 0;              ///< Hz, of the noise suppression
    std::int64_t correctedFrames = 0;    ///< whose left sample was negated, of all sources
};
