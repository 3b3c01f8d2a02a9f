#pragma once

#include "host/clean.h"
#include "host/options.h"

/// The job that the arguments describe but for its files: the sources of --source are its only inputs.
CleanJob CommonJob(const Arguments& arguments);

/// The job with all files as its inputs: the first is the microphone, the others are further sources. Throws
/// CLI::ValidationError for combinations of options that do not fit together.
CleanJob JobOf(const Arguments& arguments);
