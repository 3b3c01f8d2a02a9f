#include "host/media/packet_spool.h"

#include <cstdio>
#include <system_error>

#include "host/failure.h"
#include "host/follow_links.h"
#include "host/partial_file.h"

namespace {

struct Header {
    std::int64_t pts;
    std::int64_t dts;
    std::int64_t duration;
    std::int32_t flags;
    std::int32_t size;
    std::int32_t sideData;  ///< elements
};

struct SideHeader {
    std::int32_t type;
    std::int32_t size;
};

}  // namespace

PacketSpool::PacketSpool(const std::string& output) : mOutput(output) {
    const std::filesystem::path path = PartialPath(FollowLinks(output).value_or(output));
    if (!mFile.Create(path, std::filesystem::perms::owner_read)) {
        throw Failure(output, "cannot be written", mFile.Error());
    }
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

void PacketSpool::Write(const AVPacket& packet) {
    const Header header = {packet.pts,   packet.dts,  packet.duration,
                           packet.flags, packet.size, packet.side_data_elems};
    Put(&header, sizeof(header));
    Put(packet.data, static_cast<std::size_t>(packet.size));
    for (int i = 0; i < packet.side_data_elems; ++i) {
        const AVPacketSideData& data = packet.side_data[i];
        const SideHeader side = {data.type, static_cast<std::int32_t>(data.size)};
        Put(&side, sizeof(side));
        Put(data.data, data.size);
    }
}

void PacketSpool::Rewind() {
    mFile.Seek(0, SEEK_SET);
}

PacketPtr PacketSpool::Read() {
    Header header = {};
    if (!Get(&header, sizeof(header))) {
        return nullptr;
    }
    PacketPtr packet(Allocated(av_packet_alloc()));
    if (av_new_packet(packet.get(), header.size) < 0) {
        throw std::bad_alloc();
    }
    Get(packet->data, static_cast<std::size_t>(header.size));
    packet->pts = header.pts;
    packet->dts = header.dts;
    packet->duration = header.duration;
    packet->flags = header.flags;
    for (int i = 0; i < header.sideData; ++i) {
        SideHeader side = {};
        Get(&side, sizeof(side));
        const auto size = static_cast<std::size_t>(side.size);
        const auto type = static_cast<AVPacketSideDataType>(side.type);
        Get(Allocated(av_packet_new_side_data(packet.get(), type, size)), size);
    }
    return packet;
}

void PacketSpool::Put(const void* bytes, std::size_t count) {
    if (mFile.Write(static_cast<const char*>(bytes), static_cast<sf_count_t>(count)) !=
        static_cast<sf_count_t>(count)) {
        throw Failure(mOutput, "cannot be written", mFile.Error());
    }
}

/// @return false at the end
bool PacketSpool::Get(void* bytes, std::size_t count) {
    return mFile.Read(static_cast<char*>(bytes), static_cast<sf_count_t>(count)) ==
           static_cast<sf_count_t>(count);
}
