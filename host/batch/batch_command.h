#pragma once

#include "host/console.h"
#include "host/options.h"

/// Cleans many files, each into an output of its own. Throws Failure, CLI::ValidationError.
/// @return exit status
int CleanMany(const Arguments& arguments, const Console& console);
