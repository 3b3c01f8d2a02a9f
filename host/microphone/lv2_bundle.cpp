#include "host/microphone/lv2_bundle.h"

#include <sstream>
#include <string>

#include "host/microphone/environment.h"

namespace {

constexpr const char* kStandardPath =
    "~/.lv2:/usr/lib/" AUDIO_FILTER_ARCHITECTURE "/lv2:/usr/lib/lv2:/usr/local/lib/lv2";

}  // namespace

std::vector<std::filesystem::path> Lv2Folders() {
    const std::string given = Environment("LV2_PATH");
    std::istringstream path(given.empty() ? kStandardPath : given);
    std::vector<std::filesystem::path> folders;
    for (std::string folder; std::getline(path, folder, ':');) {
        if (folder.starts_with("~/")) {
            folder.replace(0, 1, Environment("HOME"));
        }
        if (!folder.empty()) {
            folders.emplace_back(folder);
        }
    }
    return folders;
}

std::optional<std::filesystem::path> FindLv2Bundle() {
    for (const std::filesystem::path& folder : Lv2Folders()) {
        std::filesystem::path bundle = folder / "audio_filter.lv2";
        std::error_code error;
        if (std::filesystem::is_regular_file(bundle / "manifest.ttl", error) &&
            std::filesystem::is_regular_file(bundle / "audio_filter.so", error)) {
            return bundle;
        }
    }
    return std::nullopt;
}
