#pragma once

#include <vector>

#include "host/media/libav.h"

/// Appends the samples of a frame, interleaved, full scale at 1. @return false for an unknown format
bool AppendSamples(const AVFrame& frame, std::vector<float>& samples);

/// Fills a frame, whose format and number of samples are set, with interleaved samples. They are rounded and saturated
/// as FromFloat does it. @return false for an unknown format
bool FillFrame(AVFrame& frame, const float* samples);
