/// AudioReader: arbitrary bytes as a file, read as floats and in the file's sample format, in blocks
/// of any length.

#include "host/audio_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "host/failure.h"
#include "memory_file.h"
#include "support/block.h"

namespace {

/// The contents of a file, or the reason why it is refused.
template <typename Sample>
struct Recording {
    std::string failure;
    AudioFormat format = {};
    std::vector<Sample> samples;
};

constexpr std::size_t kMostSamples = 1 << 22;  // a few bytes can encode hours of silence

template <typename Sample>
Recording<Sample> ReadAll(const std::string& path, std::size_t portion) {
    Recording<Sample> all;
    try {
        AudioReader reader(path);
        all.format = reader.Format();
        EXPECT_TRUE(all.format.channels >= 1 && all.format.channels <= 8);
        EXPECT_GT(all.format.sampleRate, 0);
        EXPECT_GT(reader.Frames().value_or(1), 0);
        const auto channels = static_cast<std::size_t>(all.format.channels);
        Block block(portion * channels * sizeof(Sample));
        auto* samples = reinterpret_cast<Sample*>(block.Data());
        std::size_t read = 1;
        while (read > 0 && all.samples.size() < kMostSamples) {
            read = reader.Read(samples, portion);
            EXPECT_LE(read, portion);
            all.samples.insert(all.samples.end(), samples, samples + read * channels);
        }
        const auto frames = static_cast<std::int64_t>(all.samples.size() / channels);
        EXPECT_TRUE(read > 0 || frames == reader.Frames().value_or(frames));
        EXPECT_GT(frames, 0);
    } catch (const Failure& failure) {
        all.failure = failure.what();
        EXPECT_EQ(all.failure.find(path + ": "), 0U);
        EXPECT_EQ(all.failure.find('\n'), std::string::npos);
    }
    return all;
}

template <typename Sample>
void ExpectTheSame(const Recording<Sample>& one, const Recording<Sample>& other) {
    EXPECT_EQ(one.failure, other.failure);
    const auto [common, most] = std::minmax({one.samples.size(), other.samples.size()});
    EXPECT_TRUE(common == most || most >= kMostSamples || !one.failure.empty());
    EXPECT_TRUE(common == 0 || std::memcmp(one.samples.data(), other.samples.data(),
                                           common * sizeof(Sample)) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const MemoryFile file(data, size);
    const std::size_t portion = 1 + (size == 0 ? 0 : data[size - 1]);
    const Recording<float> whole = ReadAll<float>(file.Path(), 4096);
    ExpectTheSame(whole, ReadAll<float>(file.Path(), portion));
    if (whole.format.samples == SampleFormat::kS16) {
        ExpectTheSame(ReadAll<short>(file.Path(), 4096), ReadAll<short>(file.Path(), portion));
    }
    return 0;
}
