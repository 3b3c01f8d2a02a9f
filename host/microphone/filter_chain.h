#pragma once

#include <string>

#include "host/filter_settings.h"

/// The configuration of PipeWire's filter chain that makes the virtual microphone.
/// @param settings suppression, gain and music
/// @param source the name of the node to clean; empty for the default microphone
std::string FilterChain(const FilterSettings& settings, const std::string& source);
