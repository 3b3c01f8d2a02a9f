#pragma once

#include <sndfile.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

/// A part of a file.
struct FilePart {
    std::uint64_t at;
    std::uint64_t size;
};

/// Parts of a file, in sequence and with some bytes replaced, as libsndfile's input.
class SoundBytes {
public:
    /// The whole file.
    explicit SoundBytes(const std::string& path);

    /// These parts of it instead.
    void Select(const std::vector<FilePart>& parts);

    /// Replaces bytes, at a position in the sequence.
    void Replace(std::uint64_t at, const std::string& bytes);

    /// Up to `count` bytes of the sequence; fewer at its end.
    std::string BytesAt(std::uint64_t at, std::size_t count);

    /// @return libsndfile's handle, which reads from this object; null if it refuses the contents
    SNDFILE* Open(SF_INFO& info);

    /// Whether libsndfile has read the last byte.
    bool AtEnd() const { return mAt == mSize; }

private:
    static SF_VIRTUAL_IO Callbacks();
    sf_count_t Seek(sf_count_t offset, int whence);
    sf_count_t Read(char* bytes, sf_count_t count);

    std::ifstream mFile;
    std::vector<FilePart> mParts;
    std::vector<sf_count_t> mStarts;  ///< of the parts, in the sequence
    sf_count_t mSize = 0;
    sf_count_t mAt = 0;
    sf_count_t mReplacedAt = 0;
    std::string mReplacement;
};
