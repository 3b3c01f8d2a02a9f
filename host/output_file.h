#pragma once

#include <sndfile.h>

#include <cstddef>
#include <filesystem>
#include <optional>

/// A new file that libraries write through and that records write errors: libsndfile does not
/// report those at the end of a FLAC file.
class OutputFile {
public:
    OutputFile() = default;
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// @param permissions none for the default
    /// @return false if it cannot be created or exists already
    bool Create(const std::filesystem::path& path,
                std::optional<std::filesystem::perms> permissions);

    /// @return libsndfile's handle, to be closed before this object; null if it refuses the format
    SNDFILE* Open(SF_INFO& info);

    /// @return whether all of it has reached the disk
    bool Close();

    /// The first error (errno); 0 for none.
    int Error() const { return mError; }

    /// @return 0 if the permissions of an existing file allow writing it; else errno
    static int MayBeReplaced(const std::filesystem::path& path);

    /// @param replace a file with the new name. @return 0, or errno: EEXIST if there is one that must stay
    static int Rename(const std::filesystem::path& from, const std::filesystem::path& to,
                      bool replace);

    sf_count_t Size();

    /// @param whence as for lseek. @return the new position; -1 for an error
    sf_count_t Seek(sf_count_t offset, int whence);

    /// @return bytes read; fewer at the end
    sf_count_t Read(char* bytes, sf_count_t count);

    /// @return bytes written; fewer only after an error
    sf_count_t Write(const char* bytes, sf_count_t count);

private:
    static SF_VIRTUAL_IO Callbacks();
    void Note(bool done);

    int mFile = -1;
    int mError = 0;
};
