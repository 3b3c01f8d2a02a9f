#pragma once

#include <vector>

#include "host/audio_format.h"
#include "host/job_files.h"
#include "stream/polarity_scan.h"

/// Reads the sources of a job to the end and finds where the left channel of each is reversed.
/// @param format the common one, stereo
std::vector<std::vector<audio_filter::Stretch>> FindReversedChannels(Sources sources,
                                                                     const AudioFormat& format);
