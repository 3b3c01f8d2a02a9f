#include "host/sound_bytes.h"

#include <algorithm>
#include <utility>

#include "host/file_bytes.h"

namespace {

SoundBytes& InputOf(void* self) {
    return *static_cast<SoundBytes*>(self);
}

}  // namespace

SoundBytes::SoundBytes(const std::string& path) : mFile(path, std::ios::binary) {
    Select({{0, SizeOf(mFile)}});
}

void SoundBytes::Select(const std::vector<FilePart>& parts) {
    mParts = parts;
    mStarts.clear();
    mSize = 0;
    for (const FilePart& part : parts) {
        mStarts.push_back(mSize);
        mSize += static_cast<sf_count_t>(part.size);
    }
}

void SoundBytes::Replace(std::uint64_t at, const std::string& bytes) {
    mReplacedAt = static_cast<sf_count_t>(at);
    mReplacement = bytes;
}

std::string SoundBytes::BytesAt(std::uint64_t at, std::size_t count) {
    const sf_count_t before = std::exchange(mAt, std::min(static_cast<sf_count_t>(at), mSize));
    std::string bytes(count, '\0');
    bytes.resize(static_cast<std::size_t>(Read(bytes.data(), static_cast<sf_count_t>(count))));
    mAt = before;
    return bytes;
}

SNDFILE* SoundBytes::Open(SF_INFO& info) {
    SF_VIRTUAL_IO callbacks = Callbacks();
    return sf_open_virtual(&callbacks, SFM_READ, &info, this);
}

SF_VIRTUAL_IO SoundBytes::Callbacks() {
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

sf_count_t SoundBytes::Seek(sf_count_t offset, int whence) {
    const sf_count_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? mAt : mSize;
    mAt = std::clamp(from + offset, sf_count_t{0}, mSize);
    return mAt;
}

sf_count_t SoundBytes::Read(char* bytes, sf_count_t count) {
    const sf_count_t start = mAt;
    while (mAt < mSize && mAt - start < count) {
        const auto after = std::upper_bound(mStarts.begin(), mStarts.end(), mAt);
        const auto index = static_cast<std::size_t>(after - mStarts.begin() - 1);
        const sf_count_t inPart = mAt - mStarts[index];
        const auto left = static_cast<sf_count_t>(mParts[index].size) - inPart;
        mFile.clear();
        mFile.seekg(static_cast<sf_count_t>(mParts[index].at) + inPart);
        mFile.read(bytes + (mAt - start), std::min(left, count - (mAt - start)));
        mAt += mFile.gcount();
        if (mFile.gcount() == 0) {
            break;
        }
    }
    const auto replacedEnd = mReplacedAt + static_cast<sf_count_t>(mReplacement.size());
    for (sf_count_t at = std::max(mReplacedAt, start); at < std::min(replacedEnd, mAt); ++at) {
        bytes[at - start] = mReplacement[static_cast<std::size_t>(at - mReplacedAt)];
    }
    return mAt - start;
}
