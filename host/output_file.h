#pragma once

#include <sndfile.h>

#include <cstddef>
#include <filesystem>
#include <optional>

/// A new file that libsndfile writes through, and that remembers whether every byte has reached the
/// disk: of a FLAC file, libsndfile does not tell at its end.
class OutputFile {
public:
    OutputFile() = default;
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// @param permissions nothing for those that new files usually get
    /// @return false when it cannot be, or when there is such a file
    bool Create(const std::filesystem::path& path,
                std::optional<std::filesystem::perms> permissions);

    /// @return libsndfile's handle, to be closed before this object is; null when it refuses
    SNDFILE* Open(SF_INFO& info);

    /// @return whether all of it is on the disk
    bool Close();

    /// Whether the permissions of a file that is there allow it to be written.
    static bool MayBeReplaced(const std::filesystem::path& path);

private:
    static SF_VIRTUAL_IO Callbacks();
    sf_count_t Size();
    sf_count_t Seek(sf_count_t offset, int whence);
    sf_count_t Write(const char* bytes, sf_count_t count);

    int mFile = -1;
    bool mFailed = false;
};
