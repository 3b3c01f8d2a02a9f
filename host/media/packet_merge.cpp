#include "host/media/packet_merge.h"

#include <algorithm>
#include <utility>

double RoutedPacket::Seconds() const {
    const std::int64_t time = packet->dts != AV_NOPTS_VALUE ? packet->dts : packet->pts;
    if (time == AV_NOPTS_VALUE) {
        return 0.0;
    }
    return static_cast<double>(time) * av_q2d(timeBase) -
           static_cast<double>(origin) / static_cast<double>(AV_TIME_BASE);
}

void PacketMerge::Add(Source source) {
    RoutedPacket first = source();
    if (first.packet != nullptr) {
        mEntries.push_back({std::move(source), std::move(first)});
    }
}

RoutedPacket PacketMerge::Next() {
    const auto first = std::min_element(
        mEntries.begin(), mEntries.end(),
        [](const Entry& a, const Entry& b) { return a.next.Seconds() < b.next.Seconds(); });
    if (first == mEntries.end()) {
        return {};
    }
    RoutedPacket packet = std::exchange(first->next, first->source());
    if (first->next.packet == nullptr) {
        mEntries.erase(first);
    }
    return packet;
}
