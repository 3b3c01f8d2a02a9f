#pragma once

#include <cstdint>
#include <istream>
#include <string>

/// Up to `count` bytes from offset `at`; fewer at the end of the file.
std::string BytesAt(std::istream& file, std::uint64_t at, std::size_t count);

std::uint64_t SizeOf(std::istream& file);

/// Decodes an unsigned number, least significant byte first.
std::uint64_t LittleEndian(const std::string& bytes);

/// Decodes an unsigned number, most significant byte first.
std::uint64_t BigEndian(const std::string& bytes);
