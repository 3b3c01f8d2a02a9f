#pragma once

#include <cstdint>
#include <istream>
#include <string>
#include <vector>

#include "host/sound_bytes.h"

/// Facts from the pages of an Ogg file, without decoding.
struct OggPages {
    bool ended = false;    ///< the last page is complete, ends its stream, and nothing follows
    bool damaged = false;  ///< not a page, or one with a wrong checksum, precedes the end
    bool chained = false;  ///< a second stream follows, which the decoder would drop
    std::vector<FilePart> flac;  ///< parts that form a FLAC stream; empty for another codec
};

/// Reads the pages from the first, up to the end or to anything damaged.
/// The decoder would drop a page with a wrong checksum without an error.
OggPages WalkOggPages(std::istream& file);

/// The checksum of a page, whose own field counts as 0. @param page header and body
std::uint32_t OggChecksum(std::string page);
