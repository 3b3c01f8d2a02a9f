#pragma once

#include <filesystem>
#include <string>

/// The extension in lower case, with its dot; empty for none.
std::string LowerExtension(const std::filesystem::path& path);

/// Whether the extension is that of a recording: --recursive cleans these files.
bool IsRecording(const std::filesystem::path& path);

/// The extension of the output of an input, with its dot: that of the input if such files can be written,
/// else ".wav".
std::string OutputExtension(const std::filesystem::path& input);
