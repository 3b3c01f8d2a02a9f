#pragma once

#include <filesystem>
#include <optional>
#include <vector>

/// The folders in which LV2 hosts look for plug-ins: LV2_PATH, or else the standard ones.
std::vector<std::filesystem::path> Lv2Folders();

/// The folder of the LV2 plug-in; none if it is not found.
std::optional<std::filesystem::path> FindLv2Bundle();
