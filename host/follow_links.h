#pragma once

#include <filesystem>
#include <optional>

/// Follows symbolic links, also to a file that does not exist yet; none for a cycle.
std::optional<std::filesystem::path> FollowLinks(std::filesystem::path path);
