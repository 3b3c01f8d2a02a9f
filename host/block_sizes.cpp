#include "host/block_sizes.h"

#include <algorithm>
#include <charconv>

namespace {

template <typename Number>
bool ParseWhole(const std::string& text, Number& number) {
    const char* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stopped == end;
}

}  // namespace

std::optional<BlockSizes> BlockSizes::Parse(const std::string& text) {
    constexpr const char* kRandom = "random:";
    BlockSizes sizes;
    if (text.rfind(kRandom, 0) == 0) {
        std::uint32_t seed = 0;
        if (!ParseWhole(text.substr(7), seed)) {
            return std::nullopt;
        }
        sizes.mRandom.emplace(seed);
        return sizes;
    }
    if (!ParseWhole(text, sizes.mMs) || sizes.mMs < 1 || sizes.mMs > kLongestMs) {
        return std::nullopt;
    }
    return sizes;
}

std::size_t BlockSizes::Next(int sampleRate) {
    const auto frames = [sampleRate](int ms) {
        return std::max<std::int64_t>(1, std::int64_t{sampleRate} * ms / 1000);
    };
    if (!mRandom) {
        return static_cast<std::size_t>(frames(mMs));
    }
    const std::int64_t shortest = frames(1);
    const std::int64_t range = frames(kLongestMs) - shortest + 1;
    return static_cast<std::size_t>(shortest + static_cast<std::int64_t>((*mRandom)()) % range);
}
