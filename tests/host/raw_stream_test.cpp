#include "host/raw_stream.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

#include "host/failure.h"
#include "host/stdio_stream.h"

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

template <typename Sample>
File Holding(const std::vector<Sample>& samples, std::size_t lessBytes = 0) {
    File file(std::tmpfile());
    const std::size_t bytes = samples.size() * sizeof(Sample) - lessBytes;
    EXPECT_EQ(std::fwrite(samples.data(), 1, bytes, file.get()), bytes);
    std::rewind(file.get());
    return file;
}

std::unique_ptr<StdioInput> Input(const File& file) {
    return std::make_unique<StdioInput>(file.get());
}

std::unique_ptr<StdioOutput> Output(const File& file) {
    return std::make_unique<StdioOutput>(file.get());
}

template <typename Work>
std::string FailureOf(const Work& work) {
    try {
        work();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "";
}

TEST(RawStream, AFormatIsASampleFormatARateAndOneOrTwoChannels) {
    const std::optional<AudioFormat> s16 = ParseRawFormat("s16:48000:2");
    ASSERT_TRUE(s16);
    EXPECT_EQ(s16->sampleRate, 48000);
    EXPECT_EQ(s16->channels, 2);
    EXPECT_EQ(s16->samples, SampleFormat::kS16);
    EXPECT_EQ(ParseRawFormat("f32:44100:1")->samples, SampleFormat::kFloat);
    for (const char* text : {"s16:48000:2", "f32:44100:1", "s16:1:1", "f32:768000:2"}) {
        EXPECT_EQ(RawFormatName(*ParseRawFormat(text)), text);
    }
    for (const char* text : {"",
                             ":",
                             "::",
                             "s16",
                             "s16:48000",
                             "s16:48000:",
                             "s16::2",
                             ":48000:2",
                             "s16:48000:0",
                             "s16:48000:9",
                             "s16:0:1",
                             "s16:-8000:1",
                             "s16:768001:1",
                             "s16:99999999999:1",
                             "s16:48000:2:1",
                             "s24:48000:2",
                             "S16:48000:2",
                             "f64:48000:2",
                             "s16:48k:2",
                             "s16:48000.0:2",
                             "s16: 48000:2",
                             "s16:+48000:2",
                             "s16:48000:2 ",
                             "s16,48000,2"}) {
        EXPECT_FALSE(ParseRawFormat(text)) << text;
    }
}

TEST(RawStream, SamplesAreReadUnchangedInAnyNumberOfReads) {
    const File file = Holding<short>({1, -2, 3, -4, 32767, -32768});
    RawReader reader(Input(file), {32000, 2, SampleFormat::kS16});
    EXPECT_EQ(reader.Frames(), std::nullopt);
    EXPECT_EQ(reader.Format().sampleRate, 32000);
    std::vector<short> samples(6);
    EXPECT_EQ(reader.Read(samples.data(), 2), 2U);
    EXPECT_EQ(reader.Read(samples.data() + 4, 2), 1U) << "as many as are left";
    EXPECT_EQ(reader.Read(samples.data(), 2), 0U);
    EXPECT_EQ(samples, (std::vector<short>{1, -2, 3, -4, 32767, -32768}));
}

TEST(RawStream, EitherSampleFormatIsReadAsTheOtherAtTheSameLevel) {
    const File shorts = Holding<short>({16384, -32768});
    std::vector<float> floats(4);
    RawReader fromShorts(Input(shorts), {32000, 1, SampleFormat::kS16});
    EXPECT_EQ(fromShorts.Read(floats.data(), 4), 2U);
    EXPECT_EQ(floats, (std::vector<float>{0.5F, -1.0F, 0.0F, 0.0F}));

    const File file = Holding<float>({0.5F, -1.0F, 2.0F, NAN});
    std::vector<short> samples(4);
    RawReader fromFloats(Input(file), {32000, 1, SampleFormat::kFloat});
    EXPECT_EQ(fromFloats.Read(samples.data(), 4), 4U);
    EXPECT_EQ(samples, (std::vector<short>{16384, -32768, 32767, 0}));
}

TEST(RawStream, AnEndInsideAFrameOf4BytesIsAFailure) {
    for (const std::size_t missing : {1U, 2U, 3U}) {
        const File file = Holding<short>({1, 2, 3, 4}, missing);
        RawReader reader(Input(file), {32000, 2, SampleFormat::kS16});
        std::vector<short> samples(20);
        EXPECT_EQ(FailureOf([&] { reader.Read(samples.data(), 10); }),
                  "standard input: ends inside a frame of 4 bytes");
    }
}

TEST(RawStream, AReadErrorIsAFailure) {
    const File file(std::fopen("/dev/null", "w"));
    RawReader reader(Input(file), {32000, 1, SampleFormat::kS16});
    short sample = 0;
    EXPECT_EQ(FailureOf([&] { reader.Read(&sample, 1); }),
              "standard input: cannot be read: Bad file descriptor");
}

TEST(RawStream, WrittenSamplesAreReadBack) {
    const File file(std::tmpfile());
    const std::vector<float> samples = {0.25F, -1.5F, 1e-9F, 3.0F};
    RawWriter writer(Output(file), {8000, 2, SampleFormat::kFloat});
    writer.Write(samples.data(), 1);
    writer.Write(static_cast<const float*>(nullptr), 0);
    writer.Write(samples.data() + 2, 1);
    writer.Commit();
    std::rewind(file.get());
    std::vector<float> read(4);
    RawReader reader(Input(file), {8000, 2, SampleFormat::kFloat});
    EXPECT_EQ(reader.Read(read.data(), 4), 2U);
    EXPECT_EQ(read, samples);
}

TEST(RawStream, AFullDiskIsAFailureAtCommitAtTheLatest) {
    const File file(std::fopen("/dev/full", "w"));
    ASSERT_NE(file, nullptr);
    RawWriter writer(Output(file), {8000, 1, SampleFormat::kS16});
    const std::vector<short> samples(10);
    writer.Write(samples.data(), samples.size());
    EXPECT_EQ(FailureOf([&] { writer.Commit(); }),
              "standard output: cannot be written: No space left on device");
    const std::vector<short> more(100000);
    EXPECT_EQ(FailureOf([&] { writer.Write(more.data(), more.size()); }),
              "standard output: cannot be written: No space left on device");
}

}  // namespace
