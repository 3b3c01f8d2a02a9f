#pragma once

#include <istream>

/// What the page headers of an Ogg file say of it before it is decoded.
struct OggPages {
    bool ended = false;    ///< the last page is whole and the last of its stream
    bool chained = false;  ///< another stream begins after the first, which the decoder would drop
};

/// Walks the pages from the first one on, up to the end or to what is not a page.
OggPages WalkOggPages(std::istream& file);
