#include "host/ogg_pages.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

#include "host/file_bytes.h"

namespace {

constexpr std::size_t kHeaderBytes = 27;  // followed by up to 255 segment lengths
constexpr std::size_t kChecksumAt = 22;
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

/// Of a CRC with the polynomial 0x04C11DB7, by the highest byte.
constexpr std::array<std::uint32_t, 256> ChecksumTable() {
    std::array<std::uint32_t, 256> table = {};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t value = byte << 24;
        for (int bit = 0; bit < 8; ++bit) {
            value = value << 1 ^ ((value >> 31) != 0 ? 0x04C11DB7U : 0U);
        }
        table[byte] = value;
    }
    return table;
}

bool IsIntact(const std::string& page) {
    return LittleEndian(page.substr(kChecksumAt, 4)) == OggChecksum(page);
}

}  // namespace

std::uint32_t OggChecksum(std::string page) {
    static constexpr std::array<std::uint32_t, 256> kTable = ChecksumTable();
    page.replace(kChecksumAt, 4, 4, '\0');
    std::uint32_t checksum = 0;
    for (const char byte : page) {
        checksum = checksum << 8 ^ kTable[checksum >> 24 ^ static_cast<unsigned char>(byte)];
    }
    return checksum;
}

OggPages WalkOggPages(std::istream& file) {
    const std::uint64_t fileSize = SizeOf(file);
    OggPages pages;
    bool beyondFirstPages = false;
    std::string flacStream;  // its serial number
    std::uint64_t at = 0;
    while (at < fileSize) {
        const std::uint64_t start = at;
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
        if (at <= fileSize && !IsIntact(BytesAt(file, start, at - start))) {
            pages.damaged = true;
            return pages;
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
