#pragma once

#include <filesystem>
#include <string>

#include "host/output_file.h"

/// A file under construction: it has a temporary name in the folder of its target until Commit, and is removed
/// unless that is reached. Throws Failure when it cannot be written.
class PartialFile {
public:
    /// @param path a new file, or a regular one to replace; symbolic links are followed
    /// @param replace a file that exists already, or appears before Commit
    explicit PartialFile(const std::string& path, bool replace = true);
    ~PartialFile();
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;

    /// Throws Failure if the path is unsuitable, before any work is done.
    static void CheckPath(const std::string& path, bool replace = true);

    OutputFile& File() { return mOutput; }

    void Write(const std::string& bytes);

    /// The temporary name.
    const std::filesystem::path& Path() const { return mPartial; }

    /// Closes the file and renames it to its path. An existing file that it replaces passes its permissions on.
    void Commit();

    /// @param error errno; 0 for the first error of the file
    [[noreturn]] void Fail(int error = 0) const;

private:
    std::string mPath;
    std::filesystem::path mTarget;   ///< mPath with symbolic links resolved
    std::filesystem::path mPartial;  ///< empty unless created
    bool mReplaces;
    OutputFile mOutput;
};

/// A hidden name in the same folder, so that the final rename is atomic. Its length does not depend
/// on the target's, which may already be the longest possible.
std::filesystem::path PartialPath(const std::filesystem::path& target);
