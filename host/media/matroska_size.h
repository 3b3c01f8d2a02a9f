#pragma once

#include <cstdint>
#include <istream>
#include <optional>

/// The size that a Matroska or WebM file states; none for another file, or one that states none, as live recordings.
std::optional<std::uint64_t> StatedMatroskaSize(std::istream& file);
