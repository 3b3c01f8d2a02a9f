#include "host/flac_input.h"

#include <algorithm>

#include "host/file_bytes.h"

namespace {

/// Position of the length in the header: 36 bits, the first four of which share a byte.
constexpr sf_count_t kLengthAt = 21;
constexpr sf_count_t kLengthEnd = 26;
constexpr char kNotOfLength = static_cast<char>(0xF0);

FlacInput& InputOf(void* self) {
    return *static_cast<FlacInput*>(self);
}

}  // namespace

FlacInput::FlacInput(const std::string& path)
    : mFile(path, std::ios::binary), mSize(static_cast<sf_count_t>(SizeOf(mFile))) {
    const std::uint64_t frames =
        BigEndian(BytesAt(mFile, kLengthAt, kLengthEnd - kLengthAt)) & 0xF'FFFF'FFFF;
    if (frames > 0) {
        mStatedFrames = static_cast<std::int64_t>(frames);
    }
}

SNDFILE* FlacInput::Open(SF_INFO& info) {
    SF_VIRTUAL_IO callbacks = Callbacks();
    return sf_open_virtual(&callbacks, SFM_READ, &info, this);
}

SF_VIRTUAL_IO FlacInput::Callbacks() {
    SF_VIRTUAL_IO callbacks = {};
    callbacks.get_filelen = [](void* self) { return InputOf(self).mSize; };
    callbacks.seek = [](sf_count_t offset, int whence, void* self) {
        return InputOf(self).Seek(offset, whence);
    };
    callbacks.read = [](void* bytes, sf_count_t count, void* self) {
        return InputOf(self).Read(static_cast<char*>(bytes), count);
    };
    callbacks.write = [](const void*, sf_count_t, void*) { return sf_count_t{0}; };
    callbacks.tell = [](void* self) { return InputOf(self).mAt; };
    return callbacks;
}

sf_count_t FlacInput::Seek(sf_count_t offset, int whence) {
    const sf_count_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? mAt : mSize;
    mAt = std::clamp(from + offset, sf_count_t{0}, mSize);
    return mAt;
}

sf_count_t FlacInput::Read(char* bytes, sf_count_t count) {
    mFile.clear();
    mFile.seekg(mAt);
    mFile.read(bytes, count);
    const sf_count_t read = mFile.gcount();
    for (sf_count_t at = std::max(kLengthAt, mAt); at < std::min(kLengthEnd, mAt + read); ++at) {
        bytes[at - mAt] =
            at == kLengthAt ? static_cast<char>(bytes[at - mAt] & kNotOfLength) : '\0';
    }
    mAt += read;
    return read;
}
