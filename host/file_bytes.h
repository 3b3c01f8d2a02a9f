#pragma once

#include <cstdint>
#include <istream>
#include <string>

/// Up to `count` bytes of a file from the offset `at` on: fewer where it ends.
std::string BytesAt(std::istream& file, std::uint64_t at, std::size_t count);

std::uint64_t SizeOf(std::istream& file);

/// The number that bytes make up, the lowest of them first.
std::uint64_t LittleEndian(const std::string& bytes);

/// The same with the highest of them first.
std::uint64_t BigEndian(const std::string& bytes);
