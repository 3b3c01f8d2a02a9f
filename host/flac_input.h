#pragma once

#include <sndfile.h>

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>

/// A FLAC file, given to libsndfile without the length that its header states: at that length
/// libsndfile stops, and whatever the file holds beyond it would be dropped without a word.
class FlacInput {
public:
    explicit FlacInput(const std::string& path);

    /// Nothing where the header leaves it open.
    std::optional<std::int64_t> StatedFrames() const { return mStatedFrames; }

    /// @return libsndfile's handle, which reads from this object; null when it takes it for no FLAC
    SNDFILE* Open(SF_INFO& info);

private:
    static SF_VIRTUAL_IO Callbacks();
    sf_count_t Seek(sf_count_t offset, int whence);
    sf_count_t Read(char* bytes, sf_count_t count);

    std::ifstream mFile;
    sf_count_t mSize;
    sf_count_t mAt = 0;
    std::optional<std::int64_t> mStatedFrames;
};
