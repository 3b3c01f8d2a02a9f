#include "host/container.h"

Container ContainerOf(const std::string& start) {
    const std::string magic = start.substr(0, 4);
    if (magic == "fLaC") {
        return Container::kFlac;
    }
    if (magic == "OggS") {
        return Container::kOgg;
    }
    const std::string form = start.size() == kContainerBytes ? start.substr(8) : "";
    if ((magic == "FORM" && (form == "AIFF" || form == "AIFC")) || magic == "caff" ||
        magic == ".snd" || magic == "riff") {
        return Container::kOther;
    }
    const bool riff = magic == "RIFF" || magic == "RIFX" || magic == "RF64";
    return riff && form == "WAVE" ? Container::kWav : Container::kNone;
}

std::uint64_t SizeOfId3Tag(const std::string& start) {
    if (start.size() < kId3HeaderBytes || start.compare(0, 3, "ID3") != 0) {
        return 0;
    }
    constexpr unsigned kHasFooter = 0x10;
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(start[at]); };
    std::uint64_t size = 0;  // seven bits a byte
    for (std::size_t at = 6; at < kId3HeaderBytes; ++at) {
        size = size << 7 | (byte(at) & 0x7FU);
    }
    return kId3HeaderBytes + size + ((byte(5) & kHasFooter) != 0 ? kId3HeaderBytes : 0);
}
