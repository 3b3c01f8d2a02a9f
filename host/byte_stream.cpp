#include "host/byte_stream.h"

#include <algorithm>

std::size_t ByteInput::Read(char* bytes, std::size_t count) {
    std::size_t read = std::min(count, mAhead.size());
    std::copy_n(mAhead.begin(), read, bytes);
    mAhead.erase(0, read);
    for (std::size_t now = 1; now > 0 && read < count; read += now) {
        now = ReadSome(bytes + read, count - read);
    }
    return read;
}

std::string ByteInput::Peek(std::size_t count) {
    if (mAhead.size() < count) {
        std::string bytes(count, '\0');
        bytes.resize(Read(bytes.data(), count));
        mAhead = bytes;
    }
    return mAhead.substr(0, count);
}
