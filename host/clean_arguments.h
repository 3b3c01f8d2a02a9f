#pragma once

#include "host/clean.h"
#include "host/options.h"

/// The job that the arguments describe. Throws CLI::ValidationError for combinations of options that
/// do not fit together.
CleanJob JobOf(const Arguments& arguments);
