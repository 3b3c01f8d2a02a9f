#include "host/block_sizes.h"

#include <algorithm>

#include "host/parse_number.h"

std::optional<BlockSizes> BlockSizes::Parse(const std::string& text) {
    const std::string random = "random:";
    BlockSizes sizes;
    if (text.rfind(random, 0) == 0) {
        const auto seed = ParseNumber<std::uint32_t>(text.substr(random.size()));
        if (!seed) {
            return std::nullopt;
        }
        sizes.mRandom.emplace(*seed);
        return sizes;
    }
    const std::optional<int> ms = ParseNumber<int>(text);
    if (!ms || *ms < 1 || *ms > kLongestMs) {
        return std::nullopt;
    }
    sizes.mMs = *ms;
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
