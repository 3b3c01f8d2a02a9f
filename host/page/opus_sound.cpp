#include "host/page/opus_sound.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>

#include "host/failure.h"
#include "host/rate_converter.h"

namespace {

constexpr std::array kOpusRates = {8000, 12000, 16000, 24000, 48000};
constexpr double kLeastBits = 6000.0;   ///< per channel: libsndfile's level 1
constexpr double kMostBits = 256000.0;  ///< per channel: level 0

/// A file in memory.
struct MemoryFile {
    std::string bytes;
    sf_count_t at = 0;
};

MemoryFile& FileOf(void* self) {
    return *static_cast<MemoryFile*>(self);
}

sf_count_t MemorySize(void* self) {
    return static_cast<sf_count_t>(FileOf(self).bytes.size());
}

sf_count_t MemorySeek(sf_count_t offset, int whence, void* self) {
    const sf_count_t base = whence == SEEK_SET   ? 0
                            : whence == SEEK_END ? MemorySize(self)
                                                 : FileOf(self).at;
    return FileOf(self).at = base + offset;
}

sf_count_t MemoryRead(void* bytes, sf_count_t count, void* self) {
    MemoryFile& file = FileOf(self);
    const sf_count_t there = std::clamp<sf_count_t>(MemorySize(self) - file.at, 0, count);
    std::copy_n(file.bytes.data() + file.at, there, static_cast<char*>(bytes));
    file.at += there;
    return there;
}

sf_count_t MemoryWrite(const void* bytes, sf_count_t count, void* self) {
    MemoryFile& file = FileOf(self);
    const auto end = static_cast<std::size_t>(file.at + count);
    file.bytes.resize(std::max(file.bytes.size(), end));
    std::copy_n(static_cast<const char*>(bytes), count, file.bytes.data() + file.at);
    file.at += count;
    return count;
}

sf_count_t MemoryTell(void* self) {
    return FileOf(self).at;
}

std::vector<float> Converted(const std::vector<short>& samples, int from, int to, int channels) {
    std::vector<float> floats(samples.size());
    std::transform(samples.begin(), samples.end(), floats.begin(),
                   [](short sample) { return static_cast<float>(sample) / 32768.0F; });
    return from == to ? floats : RateConverter(from, to, channels).Convert(floats, true);
}

}  // namespace

std::string EncodeOpus(const std::vector<short>& samples, int sampleRate, int channels,
                       double bitsPerSecond) {
    const bool isOpusRate =
        std::find(kOpusRates.begin(), kOpusRates.end(), sampleRate) != kOpusRates.end();
    SF_INFO info = {};
    info.samplerate = isOpusRate ? sampleRate : kOpusRates.back();
    info.channels = channels;
    info.format = SF_FORMAT_OGG | SF_FORMAT_OPUS;
    const std::vector<float> floats = Converted(samples, sampleRate, info.samplerate, channels);
    SF_VIRTUAL_IO callbacks = {MemorySize, MemorySeek, MemoryRead, MemoryWrite, MemoryTell};
    MemoryFile memory;
    SNDFILE* file = sf_open_virtual(&callbacks, SFM_WRITE, &info, &memory);
    if (file == nullptr) {
        throw Failure(std::string("the sound cannot be encoded: ") + sf_strerror(nullptr));
    }
    const double bits = std::clamp(bitsPerSecond / channels, kLeastBits, kMostBits);
    double level = (kMostBits - bits) / (kMostBits - kLeastBits);
    sf_command(file, SFC_SET_COMPRESSION_LEVEL, &level, sizeof(level));
    const auto count = static_cast<sf_count_t>(floats.size());
    const bool written = sf_write_float(file, floats.data(), count) == count;
    if (sf_close(file) != 0 || !written) {
        throw Failure("the sound cannot be encoded");
    }
    return memory.bytes;
}
