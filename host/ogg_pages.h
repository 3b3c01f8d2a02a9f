#pragma once

#include <istream>
#include <vector>

#include "host/sound_bytes.h"

/// Facts from the page headers of an Ogg file, without decoding.
struct OggPages {
    bool ended = false;    ///< the last page is complete, ends its stream, and nothing follows
    bool damaged = false;  ///< something that is not a page precedes the end of the file
    bool chained = false;  ///< a second stream follows, which the decoder would drop
    std::vector<FilePart> flac;  ///< parts that form a FLAC stream; empty for another codec
};

/// Reads the pages from the first, up to the end or to anything that is not a page.
OggPages WalkOggPages(std::istream& file);
