#include "host/file_tags.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <string_view>

#include "host/container.h"
#include "host/file_bytes.h"
#include "host/media/media_tags.h"

namespace {

constexpr std::size_t kMostTagBytes = std::size_t{64} << 20;

/// A FLAC block states its length in 24 bits.
constexpr std::size_t kMostFlacBytes = (std::size_t{1} << 24) - 4096;

enum FlacBlock : unsigned char {
    kPadding = 1,
    kApplication = 2,
    kComment = 4,
    kCueSheet = 5,
    kPicture = 6
};

std::string Little32(std::size_t value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>(value >> shift & 0xFF);
    }
    return bytes;
}

std::string Big32(std::size_t value) {
    const std::string bytes = Little32(value);
    return {bytes.rbegin(), bytes.rend()};
}

std::string WavChunk(const std::string& id, const std::string& contents) {
    return id + Little32(contents.size()) + contents +
           (contents.size() % 2 == 0 ? "" : std::string(1, '\0'));
}

std::string FlacBlockOf(FlacBlock type, const std::string& contents) {
    return static_cast<char>(type) + Big32(contents.size()).substr(1) + contents;
}

/// Chunks that the writer writes itself, that pad, or that describe the old samples.
bool IsKept(const std::string& id) {
    constexpr std::array<std::string_view, 11> kOld = {
        "fmt ", "data", "fact", "ds64", "PEAK", "JUNK", "junk", "PAD ", "FLLR", "levl", "LGWV"};
    const auto isText = [](char c) { return c >= ' ' && c <= '~'; };
    return std::all_of(id.begin(), id.end(), isText) &&
           std::find(kOld.begin(), kOld.end(), id) == kOld.end();
}

std::vector<std::string> ReadWavChunks(std::istream& file) {
    const std::uint64_t fileSize = SizeOf(file);
    std::vector<std::string> chunks;
    std::uint64_t longSize = 0;
    std::size_t kept = 0;
    for (std::uint64_t at = 12; at + 8 <= fileSize;) {
        const std::string id = BytesAt(file, at, 4);
        std::uint64_t size = LittleEndian(BytesAt(file, at + 4, 4));
        if (id == "ds64") {
            longSize = LittleEndian(BytesAt(file, at + 16, 8));
        } else if (id == "data" && size == 0xFFFF'FFFF) {
            size = longSize;
        }
        const bool isWhole = size <= fileSize - at - 8;
        if (!isWhole || kept + size > kMostTagBytes) {
            break;
        }
        if (IsKept(id)) {
            chunks.push_back(WavChunk(id, BytesAt(file, at + 8, size)));
            kept += size;
        }
        at += 8 + size + size % 2;
    }
    return chunks;
}

std::vector<std::string> ReadFlacBlocks(std::istream& file) {
    std::vector<std::string> blocks;
    std::uint64_t at = SizeOfId3Tag(BytesAt(file, 0, kId3HeaderBytes)) + 4;
    std::size_t kept = 0;
    for (bool isLast = false; !isLast;) {
        std::string header = BytesAt(file, at, 4);
        if (header.size() < 4) {
            break;
        }
        isLast = (header[0] & 0x80) != 0;
        header[0] = static_cast<char>(header[0] & 0x7F);
        const std::size_t size = BigEndian(header.substr(1));
        const bool isKept = header[0] == kApplication || header[0] == kComment ||
                            header[0] == kCueSheet || header[0] == kPicture;
        if (isKept && kept + size + 4 <= kMostFlacBytes) {
            blocks.push_back(header + BytesAt(file, at + 4, size));
            kept += size + 4;
            if (blocks.back().size() != size + 4) {
                blocks.pop_back();
                break;
            }
        }
        at += 4 + size;
    }
    return blocks;
}

std::string InfoId(const std::string& key) {
    constexpr std::array<std::array<std::string_view, 2>, 9> kIds = {{{"title", "INAM"},
                                                                      {"artist", "IART"},
                                                                      {"album", "IPRD"},
                                                                      {"date", "ICRD"},
                                                                      {"comment", "ICMT"},
                                                                      {"genre", "IGNR"},
                                                                      {"copyright", "ICOP"},
                                                                      {"track", "IPRT"},
                                                                      {"language", "ILNG"}}};
    for (const auto& [name, id] : kIds) {
        if (key == name) {
            return std::string(id);
        }
    }
    return "";
}

/// A tag of ID3v2.3 with a cover.
std::string Id3Of(const CoverPicture& cover) {
    const std::string text = cover.mime + std::string("\0\3\0", 3);  // front cover, no description
    const std::string frame = std::string(1, '\0') + text + cover.bytes;
    const std::string tag = "APIC" + Big32(frame.size()) + std::string(2, '\0') + frame;
    std::string size;  // seven bits a byte
    for (int shift = 21; shift >= 0; shift -= 7) {
        size += static_cast<char>(tag.size() >> shift & 0x7F);
    }
    return "ID3" + std::string("\3\0\0", 3) + size + tag;
}

std::vector<std::string> WavChunksOf(const MediaTags& tags) {
    std::string list = "INFO";
    for (const auto& [key, value] : tags.texts) {
        const std::string id = InfoId(key);
        list += id.empty() ? "" : WavChunk(id, value + std::string(1, '\0'));
    }
    std::vector<std::string> chunks;
    if (list.size() > 4) {
        chunks.push_back(WavChunk("LIST", list));
    }
    if (!tags.covers.empty()) {
        chunks.push_back(WavChunk("id3 ", Id3Of(tags.covers.front())));
    }
    return chunks;
}

std::string CommentName(const std::string& key) {
    std::string name = key == "album_artist" ? "ALBUMARTIST"
                       : key == "track"      ? "TRACKNUMBER"
                       : key == "disc"       ? "DISCNUMBER"
                                             : key;
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    std::erase_if(name, [](char c) { return c < ' ' || c > '}' || c == '='; });
    return name;
}

std::string PictureBlock(const CoverPicture& cover) {
    constexpr std::size_t kFrontCover = 3;
    return FlacBlockOf(kPicture, Big32(kFrontCover) + Big32(cover.mime.size()) + cover.mime +
                                     Big32(cover.description.size()) + cover.description +
                                     Big32(static_cast<std::size_t>(cover.width)) +
                                     Big32(static_cast<std::size_t>(cover.height)) + Big32(24) +
                                     Big32(0) + Big32(cover.bytes.size()) + cover.bytes);
}

std::vector<std::string> FlacBlocksOf(const MediaTags& tags) {
    std::string comments;
    for (const auto& [key, value] : tags.texts) {
        const std::string comment = CommentName(key) + "=" + value;
        comments += Little32(comment.size()) + comment;
    }
    const std::string vendor = "audio-filter";
    std::vector<std::string> blocks;
    std::size_t kept = 0;
    const auto add = [&](const std::string& block) {
        kept += block.size();
        if (kept <= kMostFlacBytes) {
            blocks.push_back(block);
        }
    };
    if (!tags.texts.empty()) {
        add(FlacBlockOf(kComment,
                        Little32(vendor.size()) + vendor + Little32(tags.texts.size()) + comments));
    }
    for (const CoverPicture& cover : tags.covers) {
        add(PictureBlock(cover));
    }
    return blocks;
}

std::size_t TotalBytes(const std::vector<std::string>& parts) {
    std::size_t bytes = 0;
    for (const std::string& part : parts) {
        bytes += part.size();
    }
    return bytes;
}

bool Put(OutputFile& file, sf_count_t at, const std::string& bytes) {
    const auto size = static_cast<sf_count_t>(bytes.size());
    return file.Seek(at, SEEK_SET) == at && file.Write(bytes.data(), size) == size;
}

std::string Get(OutputFile& file, sf_count_t at, std::size_t count) {
    std::string bytes(count, '\0');
    file.Seek(at, SEEK_SET);
    const sf_count_t read = file.Read(bytes.data(), static_cast<sf_count_t>(count));
    bytes.resize(static_cast<std::size_t>(std::max<sf_count_t>(read, 0)));
    return bytes;
}

}  // namespace

FileTags TagsFor(const std::string& input, const std::string& extension) {
    std::ifstream file(input, std::ios::binary);
    const std::uint64_t start = SizeOfId3Tag(BytesAt(file, 0, kId3HeaderBytes));
    const std::string head = BytesAt(file, start, kContainerBytes);
    const Container container = ContainerOf(head);
    const bool wav = extension == ".wav";
    const bool flac = extension == ".flac";
    if (wav && container == Container::kWav && !head.starts_with("RIFX")) {
        return {ReadWavChunks(file), {}};
    }
    if (flac && container == Container::kFlac) {
        return {{}, ReadFlacBlocks(file)};
    }
    if (!wav && !flac) {
        return {};
    }
    const MediaTags tags = ReadMediaTags(input);
    return {wav ? WavChunksOf(tags) : std::vector<std::string>(),
            flac ? FlacBlocksOf(tags) : std::vector<std::string>()};
}

bool AppendWavChunks(OutputFile& file, const std::vector<std::string>& chunks) {
    sf_count_t end = file.Size();
    const std::string head = Get(file, 0, 4);
    const bool isLong = head == "RF64";
    if (end % 2 != 0) {
        end += Put(file, end, std::string(1, '\0')) ? 1 : 0;
    }
    for (const std::string& chunk : chunks) {
        if (!Put(file, end, chunk)) {
            return false;
        }
        end += static_cast<sf_count_t>(chunk.size());
    }
    const auto size = static_cast<std::size_t>(end) - 8;
    constexpr sf_count_t kLongSizeAt = 20;  // in the ds64 chunk
    return isLong ? Put(file, kLongSizeAt, Little32(size & 0xFFFF'FFFF) + Little32(size >> 32))
                  : Put(file, 4, Little32(size));
}

std::size_t RoomFor(const std::vector<std::string>& flacBlocks) {
    constexpr std::size_t kSpare = 64;
    return flacBlocks.empty() ? 0 : TotalBytes(flacBlocks) + kSpare;
}

bool PutFlacBlocks(OutputFile& file, const std::vector<std::string>& blocks) {
    sf_count_t at = 4;
    while (true) {
        const std::string header = Get(file, at, 4);
        if (header.size() < 4) {
            return false;
        }
        const auto size = static_cast<sf_count_t>(BigEndian(header.substr(1)));
        const bool isLast = (header[0] & 0x80) != 0;
        if ((header[0] & 0x7F) != kComment) {
            at += 4 + size;
            if (isLast) {
                return true;  // nothing was reserved
            }
            continue;
        }
        const std::size_t room = static_cast<std::size_t>(size) + 4;
        const std::size_t used = TotalBytes(blocks);
        if (room < used + 4) {
            return true;
        }
        std::string bytes;
        for (const std::string& block : blocks) {
            bytes += block;
        }
        std::string padding = FlacBlockOf(kPadding, std::string(room - used - 4, '\0'));
        padding[0] = static_cast<char>(padding[0] | (isLast ? 0x80 : 0));
        return Put(file, at, bytes + padding);
    }
}
