#pragma once

#include "host/console.h"
#include "host/options.h"

/// Says what is in files and what cleaning would do with them. Throws CLI::ValidationError.
/// @return exit status: 1 if a file cannot be read or cleaned
int RunInfo(const Arguments& arguments, const Console& console);
