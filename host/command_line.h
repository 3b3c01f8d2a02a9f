#pragma once

#include <iosfwd>

/// Runs the command line.
/// @param progress stream of the progress bar; null for none
/// @return exit status: 0 done, 1 failed, 2 usage error; 1 and 2 print one line to `err`
int RunCommandLine(int argc, const char* const* argv, std::ostream& out, std::ostream& err,
                   std::ostream* progress);
