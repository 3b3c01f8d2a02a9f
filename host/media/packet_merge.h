#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "host/media/libav.h"

/// A packet on its way to a file.
struct RoutedPacket {
    PacketPtr packet;  ///< null at the end
    int stream;        ///< of the output
    AVRational timeBase;
    std::int64_t origin;  ///< what its times count from, in AV_TIME_BASE units

    /// When it is decoded, in s; 0 if unknown.
    double Seconds() const;
};

/// Packets of several sources in the order of their times.
class PacketMerge {
public:
    using Source = std::function<RoutedPacket()>;

    /// Adds a source, whose packets are in order.
    void Add(Source source);

    /// The earliest packet; null at the end of all sources.
    RoutedPacket Next();

private:
    struct Entry {
        Source source;
        RoutedPacket next;
    };

    std::vector<Entry> mEntries;
};
