#pragma once

#include <iosfwd>

#include "host/file_info.h"

/// Prints a paragraph.
void PrintInfo(std::ostream& out, const FileInfo& info);

/// Prints one line of JSON.
void PrintInfoJson(std::ostream& out, const FileInfo& info);
