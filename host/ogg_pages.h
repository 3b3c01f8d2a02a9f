#pragma once

#include <istream>

/// Facts from the page headers of an Ogg file, without decoding.
struct OggPages {
    bool ended = false;    ///< the last page is complete and ends its stream
    bool chained = false;  ///< a second stream follows, which the decoder would drop
};

/// Reads the pages from the first, up to the end or to anything that is not a page.
OggPages WalkOggPages(std::istream& file);
