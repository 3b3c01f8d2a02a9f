#pragma once

#include <string>
#include <vector>

/// A mark of an axis.
struct Tick {
    double share;  ///< of the axis, 0..1
    std::string label;
};

/// Marks at round times from 0 on, at most 8, labelled in s, m:s or h:m:s.
std::vector<Tick> TimeTicks(double seconds);

/// Marks at round values in between two, at most `most`.
std::vector<Tick> LinearTicks(double lowest, double highest, std::size_t most);

/// A point in time as on a time axis of that length, with fractions of a second below one minute.
std::string TimeText(double seconds);
