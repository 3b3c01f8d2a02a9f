#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// A file in a folder, or a folder in it that cannot be read.
struct FoundFile {
    std::string path;
    std::filesystem::path below;  ///< the path below the folder that was searched
    std::string problem;          ///< why it cannot be read; empty for none
};

/// The recordings in a folder and its subfolders, by extension and in the order of their names. Leaves out hidden files
/// and folders, and does not follow links to folders.
/// @param excluded a folder that is left out; may be empty
std::vector<FoundFile> FindRecordings(const std::filesystem::path& folder,
                                      const std::filesystem::path& excluded);
