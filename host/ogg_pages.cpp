#include "host/ogg_pages.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "host/file_bytes.h"

namespace {

constexpr std::size_t kHeaderBytes = 27;  // followed by up to 255 segment lengths
constexpr unsigned kFirstOfStream = 2;
constexpr unsigned kLastOfStream = 4;

/// The first packet of a FLAC stream in Ogg: this, a version and a number of packets precede what
/// begins a FLAC file.
constexpr const char* kFlacMark =
    "\x7F"
    "FLAC";
constexpr std::size_t kFlacMarkBytes = 9;

unsigned ByteOf(const std::string& bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

}  // namespace

OggPages WalkOggPages(std::istream& file) {
    const std::uint64_t fileSize = SizeOf(file);
    OggPages pages;
    bool beyondFirstPages = false;
    std::string flacStream;  // its serial number
    std::uint64_t at = 0;
    while (at < fileSize) {
        const std::string header = BytesAt(file, at, kHeaderBytes + 255);
        if (header.size() < kHeaderBytes || header.compare(0, 4, "OggS") != 0) {
            pages.damaged = header.size() >= kHeaderBytes;
            pages.ended = false;
            return pages;
        }
        const std::size_t parts = ByteOf(header, 26);
        const std::uint64_t body = at + kHeaderBytes + parts;
        at = body;
        for (std::size_t i = kHeaderBytes; i < header.size() && i < kHeaderBytes + parts; ++i) {
            at += ByteOf(header, i);
        }
        const unsigned flags = ByteOf(header, 5);
        const bool first = (flags & kFirstOfStream) != 0;
        pages.chained = pages.chained || (first && beyondFirstPages);
        beyondFirstPages = beyondFirstPages || !first;
        pages.ended = (flags & kLastOfStream) != 0 && at <= fileSize;

        const std::string stream = header.substr(14, 4);
        const std::uint64_t end = std::min(at, fileSize);
        if (first && pages.flac.empty() && end > body + kFlacMarkBytes &&
            BytesAt(file, body, 5) == kFlacMark) {
            flacStream = stream;
            pages.flac.push_back({body + kFlacMarkBytes, end - body - kFlacMarkBytes});
        } else if (!pages.flac.empty() && stream == flacStream && end > body) {
            pages.flac.push_back({body, end - body});
        }
    }
    return pages;
}
