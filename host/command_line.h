#pragma once

#include <iosfwd>

/// The whole command line but for its streams.
/// @param progress where the progress bar goes; null for none
/// @return exit status: 0 done, 1 failed, 2 not understood; then `err` has got one line
int RunCommandLine(int argc, const char* const* argv, std::ostream& out, std::ostream& err,
                   std::ostream* progress);
