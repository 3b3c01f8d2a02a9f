#include "host/aligned_stream.h"

#include <gtest/gtest.h>

#include "host/failure.h"
#include "sound_files.h"

namespace {

constexpr AudioFormat kFormat = {48000, 2, SampleFormat::kS16};

TEST(AlignedStream, WithEverythingOffTheOutputIsTheInput) {
    audio_filter::StreamSettings off;
    off.suppression.reset();
    for (const std::size_t frames : {std::size_t{1}, std::size_t{480}, std::size_t{250000}}) {
        AlignedStream<short> stream(kFormat, 1, off);
        const std::vector<short> in = Ramp(2 * frames);
        std::vector<short> out = stream.Push(in);
        const std::vector<short> rest = stream.Drain();
        out.insert(out.end(), rest.begin(), rest.end());
        EXPECT_EQ(out, in) << frames;
    }
}

TEST(AlignedStream, WhatPrimesItDoesNotComeOut) {
    audio_filter::StreamSettings off;
    off.suppression.reset();
    AlignedStream<short> stream(kFormat, 2, off);
    stream.Prime(std::vector<short>(2 * 2 * 1000, 77));
    EXPECT_EQ(stream.Primed(), 1000U);
    std::vector<short> out = stream.Push(std::vector<short>(2 * 2 * 100));
    const std::vector<short> rest = stream.Drain();
    out.insert(out.end(), rest.begin(), rest.end());
    EXPECT_EQ(out, std::vector<short>(200));
}

TEST(AlignedStream, RatesThatTheStreamDoesNotSupportAreAFailure) {
    EXPECT_THROW(AlignedStream<float>({7999, 1, SampleFormat::kFloat}, 1, {}), Failure);
}

}  // namespace
