/// MediaReader: arbitrary bytes as a media file, read in blocks of two lengths.

#include "host/media/media_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "host/failure.h"
#include "memory_file.h"
#include "support/block.h"

namespace {

/// The start of a file, or the reason why it is refused.
struct Recording {
    std::string failure;
    std::vector<float> samples;
    bool isWhole = false;
};

constexpr std::size_t kMostSamples = 1 << 18;  // a few bytes can encode hours of silence

Recording ReadAll(const std::string& path, std::size_t portion) {
    Recording all;
    try {
        std::vector<std::string> warnings;
        ReadOptions options;
        options.warn = [&](const std::string& line) { warnings.push_back(line); };
        MediaReader reader(path, 0, options, path);
        const AudioFormat& format = reader.Format();
        EXPECT_TRUE(format.channels >= 1 && format.channels <= 8);
        EXPECT_GT(format.sampleRate, 0);
        const auto channels = static_cast<std::size_t>(format.channels);
        Block block(portion * channels * sizeof(float));
        auto* samples = reinterpret_cast<float*>(block.Data());
        std::size_t read = 1;
        while (read > 0 && all.samples.size() < kMostSamples) {
            read = reader.Read(samples, portion);
            EXPECT_LE(read, portion);
            all.samples.insert(all.samples.end(), samples, samples + read * channels);
        }
        all.isWhole = read == 0;
        const auto frames = static_cast<std::int64_t>(all.samples.size() / channels);
        EXPECT_TRUE(!all.isWhole || frames == reader.Frames().value_or(-1));
        EXPECT_LE(warnings.size(), 3U);  // cut, damaged, with gaps
        for (const std::string& line : warnings) {
            EXPECT_EQ(line.find('\n'), std::string::npos);
        }
    } catch (const Failure& failure) {
        all.failure = failure.what();
        EXPECT_EQ(all.failure.find(path + ": "), 0U);
        EXPECT_EQ(all.failure.find('\n'), std::string::npos);
    }
    return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const MemoryFile file(data, size);
    const Recording whole = ReadAll(file.Path(), 4096);
    const Recording other = ReadAll(file.Path(), 1 + (size == 0 ? 0 : data[size - 1]));
    if (whole.isWhole && other.isWhole) {
        EXPECT_EQ(whole.failure, other.failure);
        EXPECT_EQ(whole.samples.size(), other.samples.size());
    }
    const std::size_t common = std::min(whole.samples.size(), other.samples.size());
    EXPECT_TRUE(common == 0 || std::memcmp(whole.samples.data(), other.samples.data(),
                                           common * sizeof(float)) == 0);
    return 0;
}
