#pragma once

#include <iosfwd>

#include "host/progress_bar.h"

/// Runs the command line.
/// The summary and each message are written at once, so that those of parallel runs do not mix.
/// @param progress its label is the input's name
/// @return exit status: 0 done, 1 failed, 2 usage error; 1 and 2 print one line to `err`
int RunCommandLine(int argc, const char* const* argv, std::ostream& out, std::ostream& err,
                   ProgressOutput progress);
