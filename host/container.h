#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// Containers of audio.
enum class Container {
    kNone,
    kWav,
    kFlac,
    kOgg,
    kOther  ///< AIFF, CAF, AU, Wave64: libsndfile reads them, too
};

constexpr std::size_t kContainerBytes = 12;
constexpr std::size_t kId3HeaderBytes = 10;
constexpr const char* kNoSound = "not a WAV, FLAC or Ogg file";

/// The container by its first kContainerBytes bytes. libsndfile's own detection is not used: its
/// MPEG decoder writes to standard error.
Container ContainerOf(const std::string& start);

/// The size of the ID3v2 tag that begins with these kId3HeaderBytes bytes; 0 for anything else.
std::uint64_t SizeOfId3Tag(const std::string& start);
