#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "host/media/libav.h"
#include "host/output_file.h"

/// Encoded packets of a track in an unnamed temporary file, written once and then read back. Throws Failure when the
/// disk is full.
class PacketSpool {
public:
    /// @param output the file that the packets are for: they are stored in its folder
    explicit PacketSpool(const std::string& output);

    void Write(const AVPacket& packet);

    /// From now on, packets are read from the first on.
    void Rewind();

    /// The next packet; null at the end.
    PacketPtr Read();

private:
    void Put(const void* bytes, std::size_t count);
    bool Get(void* bytes, std::size_t count);

    std::string mOutput;
    OutputFile mFile;
};
