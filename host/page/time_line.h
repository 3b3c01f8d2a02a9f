#pragma once

#include <string>
#include <vector>

#include "host/page/excerpts.h"
#include "host/report.h"

/// A bar of a time line, in s.
struct Bar {
    double begin;
    double end;
    std::string text;
};

/// The stretches in which music was detected.
std::vector<Bar> MusicBars(const Report& report);

/// Settings, music, phase corrections and parts to listen to along the time axis, as HTML.
std::string TimeLinePlot(const Report& report, const std::vector<Bar>& excerpts);

/// The same as a table, as HTML.
std::string EventTable(const Report& report);
