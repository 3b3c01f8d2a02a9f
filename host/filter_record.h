#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// A listener event.
struct FilterEvent {
    double seconds;  ///< position in the stream
    int code;
    std::string text;
};

/// What a filter reported during a stream.
struct FilterRecord {
    std::vector<FilterEvent> events;
    std::map<std::string, int> refused;  ///< calls with their results, and how often
    std::int64_t handOffs = 0;           ///< blocks resampled to the suppressor's rate and back
    int processingRate = 0;              ///< Hz, of noise suppression
    std::int64_t correctedFrames = 0;    ///< frames with the left sample negated, all sources
};
