#include "host/media_extensions.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace {

struct Extension {
    const char* text;
    bool isWritten;
};

constexpr Extension kRecordings[] = {
    {".wav", true},   {".flac", true}, {".ogg", false},  {".oga", false}, {".opus", false},
    {".mp3", false},  {".m4a", false}, {".aac", false},  {".mp4", false}, {".mkv", false},
    {".mka", false},  {".mov", false}, {".webm", false}, {".wma", false}, {".amr", false},
    {".aiff", false}, {".aif", false}, {".caf", false},
};

const Extension* Find(const std::filesystem::path& path) {
    const std::string extension = LowerExtension(path);
    const auto* const found =
        std::find_if(std::begin(kRecordings), std::end(kRecordings),
                     [&extension](const Extension& known) { return extension == known.text; });
    return found == std::end(kRecordings) ? nullptr : found;
}

}  // namespace

std::string LowerExtension(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

bool IsRecording(const std::filesystem::path& path) {
    return Find(path) != nullptr;
}

std::string OutputExtension(const std::filesystem::path& input) {
    const Extension* const own = Find(input);
    return own != nullptr && own->isWritten ? input.extension().string() : ".wav";
}
