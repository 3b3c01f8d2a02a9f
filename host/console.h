#pragma once

#include <iosfwd>

#include "host/progress_bar.h"

/// Exit statuses.
constexpr int kDone = 0;
constexpr int kFailure = 1;
constexpr int kUsageError = 2;

/// Where a command prints.
struct Console {
    std::ostream& out;
    std::ostream& err;
    ProgressOutput progress;
};
