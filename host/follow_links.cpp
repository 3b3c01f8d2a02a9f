#include "host/follow_links.h"

#include <system_error>

std::optional<std::filesystem::path> FollowLinks(std::filesystem::path path) {
    std::error_code error;
    for (int links = 0; links < 40; ++links) {
        if (!std::filesystem::is_symlink(std::filesystem::symlink_status(path, error))) {
            return path;
        }
        path = path.parent_path() / std::filesystem::read_symlink(path, error);
    }
    return std::nullopt;
}
