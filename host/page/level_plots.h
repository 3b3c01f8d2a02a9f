#pragma once

#include <string>

#include "host/page/column_history.h"
#include "host/report.h"

/// The waveform after cleaning over that before, as HTML.
std::string WaveformPlot(const ColumnHistory& history);

/// The levels before and after over time, and the noise floors, as HTML.
std::string LevelPlot(const ColumnHistory& history, const Report& report);

/// The levels over time as a table of at most 24 lines, as HTML.
std::string LevelTable(const ColumnHistory& history);
