#pragma once

#include <cstdio>
#include <string>

/// Opens a file for writing and truncates it. Follows symbolic links and leaves them in place.
/// Throws Failure for a device, a pipe or a folder, which stay untouched, and for a file that cannot
/// be written.
std::FILE* OpenRegularFile(const std::string& path);
