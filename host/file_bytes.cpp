#include "host/file_bytes.h"

std::string BytesAt(std::istream& file, std::uint64_t at, std::size_t count) {
    std::string bytes(count, '\0');
    file.clear();
    file.seekg(static_cast<std::streamoff>(at));
    file.read(bytes.data(), static_cast<std::streamsize>(count));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

std::uint64_t SizeOf(std::istream& file) {
    file.clear();
    file.seekg(0, std::ios::end);
    return static_cast<std::uint64_t>(file.tellg());
}

std::uint64_t LittleEndian(const std::string& bytes) {
    return BigEndian({bytes.rbegin(), bytes.rend()});
}

std::uint64_t BigEndian(const std::string& bytes) {
    std::uint64_t number = 0;
    for (const char byte : bytes) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}
