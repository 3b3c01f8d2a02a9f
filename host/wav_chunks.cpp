#include "host/wav_chunks.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

#include "host/file_bytes.h"

namespace {

constexpr std::uint64_t kUnknownSize = std::numeric_limits<std::uint64_t>::max();

/// The tag of an extensible format is the start of its GUID.
bool IsMpeg(const std::string& format, bool bigEndian) {
    const auto number = bigEndian ? BigEndian : LittleEndian;
    std::uint64_t tag = number(format.substr(0, 2));
    if (tag == 0xFFFE && format.size() >= 26) {
        tag = number(format.substr(24, 2));
    }
    return tag == 0x50 || tag == 0x55;
}

bool IsPrintable(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/// Whether the rest of a file consists of chunks, as it does after no audio.
bool AreChunks(std::istream& file, std::uint64_t at, std::uint64_t fileSize) {
    while (at + 8 <= fileSize && IsPrintable(BytesAt(file, at, 4))) {
        const std::uint64_t size = LittleEndian(BytesAt(file, at + 4, 4));
        at += 8 + size + size % 2;
    }
    return at == fileSize;
}

}  // namespace

bool IsUnknownWavSize(std::uint64_t size) {
    const auto isNear = [size](std::uint64_t limit) {
        return size >= limit - 0x10000 && size <= limit + 0x10000;
    };
    return size == 0 || isNear(0x8000'0000) || isNear(0x1'0000'0000) || size >= kUnknownSize / 2;
}

WavChunks WalkWavChunks(std::istream& file) {
    const std::uint64_t fileSize = SizeOf(file);
    const std::string head = BytesAt(file, 0, 12);
    const bool bigEndian = head.compare(0, 4, "RIFX") == 0;
    const auto number = bigEndian ? BigEndian : LittleEndian;
    WavChunks chunks;
    std::uint64_t longSize = kUnknownSize;  // of the audio, if 32 bits are too few
    std::uint64_t at = 12;
    while (at + 8 <= fileSize) {
        const std::string id = BytesAt(file, at, 4);
        std::uint64_t size = number(BytesAt(file, at + 4, 4));
        at += 8;
        if (!IsPrintable(id)) {
            return chunks;  // not a chunk: left to the decoder
        }
        if (id == "data") {
            size = size == 0xFFFF'FFFF ? longSize : size;
            chunks.cut = !IsUnknownWavSize(size) && size > fileSize - at;
            chunks.unstated = size == 0 && at < fileSize && !AreChunks(file, at, fileSize);
            chunks.audioAt = at;
            chunks.statedBytes = size;
            return chunks;
        }
        if (id == "ds64") {
            longSize = number(BytesAt(file, at + 8, 8));
        } else if (id == "fmt ") {
            chunks.mpeg = IsMpeg(BytesAt(file, at, 26), bigEndian);
        }
        at += size + size % 2;
    }
    const bool headerIsWhole = head.size() == 12;
    chunks.cut = !headerIsWhole || at > fileSize || number(head.substr(4, 4)) + 8 > fileSize;
    return chunks;
}
