#pragma once

#include <sndfile.h>

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>

/// A FLAC file that hides its stated length from libsndfile, which would otherwise stop there and
/// silently drop any audio beyond it.
class FlacInput {
public:
    explicit FlacInput(const std::string& path);

    /// None if the header leaves it open.
    std::optional<std::int64_t> StatedFrames() const { return mStatedFrames; }

    /// @return libsndfile's handle, which reads from this object; null if it is not FLAC
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
