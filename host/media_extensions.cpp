#include "host/media_extensions.h"

#include <algorithm>
#include <cctype>
#include <iterator>

#include "host/audio_writer.h"
#include "host/media/media_output.h"

namespace {

constexpr const char* kRecordings[] = {
    ".wav", ".flac", ".ogg", ".oga", ".opus", ".mp3", ".m4a", ".m4b",  ".aac", ".mp4",
    ".m4v", ".mkv",  ".mka", ".mov", ".webm", ".wma", ".amr", ".aiff", ".aif", ".caf",
};

}  // namespace

std::string LowerExtension(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

bool IsRecording(const std::filesystem::path& path) {
    return std::find(std::begin(kRecordings), std::end(kRecordings), LowerExtension(path)) !=
           std::end(kRecordings);
}

std::string OutputExtension(const std::filesystem::path& input) {
    const bool isWritten = IsMediaOutput(input.string()) || IsSoundOutput(input.string());
    return isWritten ? input.extension().string() : ".wav";
}
