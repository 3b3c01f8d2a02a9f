#pragma once

#include <string>

/// An environment variable; empty if it is not set.
std::string Environment(const char* name);
