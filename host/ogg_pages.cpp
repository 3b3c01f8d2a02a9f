#include "host/ogg_pages.h"

#include <cstdint>
#include <string>

#include "host/file_bytes.h"

namespace {

constexpr std::size_t kHeaderBytes = 27;  // followed by up to 255 segment lengths
constexpr unsigned kFirstOfStream = 2;
constexpr unsigned kLastOfStream = 4;

unsigned ByteOf(const std::string& bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

}  // namespace

OggPages WalkOggPages(std::istream& file) {
    const std::uint64_t fileSize = SizeOf(file);
    OggPages pages;
    bool beyondFirstPages = false;
    std::uint64_t at = 0;
    while (at < fileSize) {
        const std::string header = BytesAt(file, at, kHeaderBytes + 255);
        if (header.size() < kHeaderBytes || header.compare(0, 4, "OggS") != 0) {
            return pages;
        }
        const std::size_t parts = ByteOf(header, 26);
        at += kHeaderBytes + parts;
        for (std::size_t i = kHeaderBytes; i < header.size() && i < kHeaderBytes + parts; ++i) {
            at += ByteOf(header, i);
        }
        const unsigned flags = ByteOf(header, 5);
        const bool first = (flags & kFirstOfStream) != 0;
        pages.chained = pages.chained || (first && beyondFirstPages);
        beyondFirstPages = beyondFirstPages || !first;
        pages.ended = (flags & kLastOfStream) != 0 && at <= fileSize;
    }
    return pages;
}
