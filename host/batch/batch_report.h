#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include "host/batch/batch.h"

/// "1 file", "2 files".
std::string FileCount(std::size_t count);

/// Prints what would be done: a line a file that would be cleaned or skipped.
void PrintPlan(std::ostream& out, const std::vector<PlannedFile>& files, bool json);

/// Prints a file as one line of JSON.
void PrintJsonLine(std::ostream& out, const PlannedFile& file, const BatchResult& result);

/// Prints a table with a line a file and a total.
/// @param elapsed s
void PrintBatchTable(std::ostream& out, const Batch& batch, double elapsed);

/// Prints warnings, then a line for each failure and their number; nothing if there is none.
/// @param interrupted whether a signal has ended the batch
void PrintProblems(std::ostream& err, const Batch& batch, bool interrupted);
