#pragma once

#include "host/console.h"
#include "host/options.h"

/// Cleans one recording, or many. Throws Failure, CLI::ValidationError.
/// @return exit status
int RunClean(const Arguments& arguments, const Console& console);

/// Cleans several recordings and mixes them into one. Throws Failure, CLI::ValidationError.
/// @return exit status
int RunMix(const Arguments& arguments, const Console& console);
