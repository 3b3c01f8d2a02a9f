#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

#include "common/result_code.h"
#include "stream/stream.h"
#include "support/fail_each.h"
#include "support/signals.h"

namespace audio_filter {

namespace {

const StreamSettings kSettings = {.gain = 0.5F, .phaseCheck = true};

/// The output for the same stereo block in both sources.
std::vector<float> OutputOf(Stream& stream, const std::vector<float>& in) {
    std::vector<float> out(in.size(), -7.0F);
    const void* from[] = {in.data(), in.data()};
    void* to[] = {out.data()};
    stream.Process(from, to, static_cast<int>(in.size() / 2));
    return out;
}

TEST(AllocationFaults, AStreamWhoseInitOrResetThrewIsNotInitialisedAndTheNextInitSucceeds) {
    int failures = 0;
    for (const int rate : {48000, 96000}) {
        const StreamFormat format = {
            .sampleRate = rate, .channels = 2, .samples = SAMPLE_FMT_FLT, .sources = 2};
        std::mt19937 random(1);
        const std::vector<float> in =
            NoisySpeech(random, static_cast<std::size_t>(rate / 10), rate);  // 50 ms
        Stream fresh;
        fresh.Init(format, kSettings);
        const std::vector<float> expected = OutputOf(fresh, in);
        const auto check = [&](Stream& stream, int code) {
            EXPECT_TRUE(code == RESULT_OK || code == kThrew) << code;
            if (code == kThrew) {
                EXPECT_EQ(stream.Latency(), 0);
                EXPECT_EQ(stream.Reset(), RESULT_NOT_INITIALISED);
                EXPECT_EQ(OutputOf(stream, in), std::vector<float>(expected.size(), -7.0F));
                ASSERT_EQ(stream.Init(format, kSettings), RESULT_OK);
            }
            EXPECT_EQ(OutputOf(stream, in), expected);
        };
        failures += FailEach([] { return std::make_unique<Stream>(); },
                             [&](Stream& stream) { return stream.Init(format, kSettings); }, check);
        failures += FailEach(
            [&] {
                auto stream = std::make_unique<Stream>();
                stream->Init(format, kSettings);
                OutputOf(*stream, in);
                return stream;
            },
            [](Stream& stream) { return stream.Reset(); }, check);
    }
    Report("Stream::Init and Stream::Reset", failures);
}

}  // namespace

}  // namespace audio_filter
