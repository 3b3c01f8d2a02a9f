#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

/// An exact number of bytes on the heap, starting `shift` bytes past an aligned address, so that a
/// sanitizer detects every access beyond them.
class Block {
public:
    explicit Block(std::size_t size, std::size_t shift = 0)
        : mSize(size), mShift(shift), mBytes(std::make_unique<char[]>(shift + size)) {
        std::fill_n(mBytes.get(), shift + size, '\x5A');
    }
    explicit Block(const std::vector<char>& bytes, std::size_t shift = 0)
        : Block(bytes.size(), shift) {
        std::copy(bytes.begin(), bytes.end(), Data());
    }

    char* Data() { return mBytes.get() + mShift; }
    std::size_t Size() const { return mSize; }
    std::vector<char> Bytes() const {
        return {mBytes.get() + mShift, mBytes.get() + mShift + mSize};
    }

private:
    std::size_t mSize;
    std::size_t mShift;
    std::unique_ptr<char[]> mBytes;
};

/// The whole samples in some bytes, and samples as bytes.
template <typename Sample>
std::vector<Sample> SamplesOf(const std::vector<char>& bytes) {
    std::vector<Sample> samples(bytes.size() / sizeof(Sample));
    std::copy_n(bytes.data(), samples.size() * sizeof(Sample),
                reinterpret_cast<char*>(samples.data()));
    return samples;
}

template <typename Sample>
void PutSamples(const std::vector<Sample>& samples, std::vector<char>& bytes) {
    std::copy_n(reinterpret_cast<const char*>(samples.data()), samples.size() * sizeof(Sample),
                bytes.data());
}
