#include "host/media/matroska_size.h"

#include <string>

#include "host/file_bytes.h"

namespace {

/// An element's size: the leading zeros of its first byte tell how many bytes follow.
struct EbmlSize {
    std::uint64_t value;
    std::uint64_t length;  ///< of the number itself, in bytes
    bool isKnown;
};

EbmlSize ReadEbmlSize(std::istream& file, std::uint64_t at) {
    const std::string first = BytesAt(file, at, 1);
    std::uint64_t length = 1;
    for (unsigned bit = 0x80;
         length < 8 && !first.empty() && (static_cast<unsigned char>(first[0]) & bit) == 0;
         bit >>= 1) {
        ++length;
    }
    const std::uint64_t most = (std::uint64_t{1} << (7 * length)) - 1;
    const std::uint64_t value = BigEndian(BytesAt(file, at, length)) & most;
    return {value, length, value != most};
}

}  // namespace

std::optional<std::uint64_t> StatedMatroskaSize(std::istream& file) {
    constexpr std::uint64_t kIdBytes = 4;
    if (BytesAt(file, 0, kIdBytes) != "\x1A\x45\xDF\xA3") {
        return std::nullopt;
    }
    const EbmlSize header = ReadEbmlSize(file, kIdBytes);
    const std::uint64_t segment = kIdBytes + header.length + header.value;
    if (BytesAt(file, segment, kIdBytes) != "\x18\x53\x80\x67") {
        return std::nullopt;
    }
    const EbmlSize size = ReadEbmlSize(file, segment + kIdBytes);
    return size.isKnown ? std::optional(segment + kIdBytes + size.length + size.value)
                        : std::nullopt;
}
