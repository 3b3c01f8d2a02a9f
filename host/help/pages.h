#pragma once

#include <filesystem>

/// Writes the man page and the completions into a folder, at the places below share/ where systems look for them. Throws
/// std::runtime_error if a file cannot be written.
void WritePages(const std::filesystem::path& folder);
