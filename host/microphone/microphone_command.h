#pragma once

#include "host/console.h"
#include "host/options.h"

/// Installs, removes or shows the virtual microphone of the user. Throws CLI::ValidationError and Failure.
/// @return exit status: of "status", 1 if the microphone is not installed or lacks its plug-in
int RunMicrophone(const Arguments& arguments, const Console& console);
