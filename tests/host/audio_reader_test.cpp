#include "host/audio_reader.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "host/failure.h"
#include "sound_files.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

std::string FailureOf(const std::string& path) {
    try {
        AudioReader reader(path);
        std::vector<float> block(1000);
        while (reader.Read(block.data(), 400) > 0) {
        }
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "";
}

class AudioReaderTest : public testing::Test {
protected:
    std::string Write(const std::string& name, int format, int channels = 1,
                      std::size_t samples = 20000) {
        const std::string path = dir.File(name);
        WriteSound<short>(path, {32000, channels, format, Ramp(samples)});
        return path;
    }

    /// Cuts the last third off.
    std::string Cut(const std::string& path) {
        fs::resize_file(path, fs::file_size(path) * 2 / 3);
        return path;
    }

    TempDir dir;
};

TEST_F(AudioReaderTest, A16BitWavIsReadSampleBySample) {
    AudioReader reader(Write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 2));
    EXPECT_EQ(reader.Format().sampleRate, 32000);
    EXPECT_EQ(reader.Format().channels, 2);
    EXPECT_EQ(reader.Format().kind, SampleKind::kS16);
    EXPECT_EQ(reader.Frames(), 10000);
    std::vector<short> samples(20000);
    EXPECT_EQ(reader.Read(samples.data(), 6000), 6000U);
    EXPECT_EQ(reader.Read(samples.data() + 12000, 6000), 4000U);
    EXPECT_EQ(samples, Ramp(20000));
    EXPECT_EQ(reader.Read(samples.data(), 1), 0U);
}

TEST_F(AudioReaderTest, Integers16BitsWideAndLossyCodingsAre16BitAndTheRestFloat) {
    const auto kind = [this](int format) { return AudioReader(Write("a", format)).Format().kind; };
    EXPECT_EQ(kind(SF_FORMAT_WAV | SF_FORMAT_PCM_U8), SampleKind::kS16);
    EXPECT_EQ(kind(SF_FORMAT_WAV | SF_FORMAT_ULAW), SampleKind::kS16);
    EXPECT_EQ(kind(SF_FORMAT_FLAC | SF_FORMAT_PCM_16), SampleKind::kS16);
    EXPECT_EQ(kind(SF_FORMAT_OGG | SF_FORMAT_VORBIS), SampleKind::kS16);
    EXPECT_EQ(kind(SF_FORMAT_WAV | SF_FORMAT_PCM_24), SampleKind::kFloat);
    EXPECT_EQ(kind(SF_FORMAT_WAV | SF_FORMAT_PCM_32), SampleKind::kFloat);
    EXPECT_EQ(kind(SF_FORMAT_WAV | SF_FORMAT_FLOAT), SampleKind::kFloat);
    EXPECT_EQ(kind(SF_FORMAT_WAV | SF_FORMAT_DOUBLE), SampleKind::kFloat);
    EXPECT_EQ(kind(SF_FORMAT_FLAC | SF_FORMAT_PCM_24), SampleKind::kFloat);
    EXPECT_EQ(kind(SF_FORMAT_WAVEX | SF_FORMAT_PCM_16), SampleKind::kS16);
    EXPECT_EQ(kind(SF_FORMAT_RF64 | SF_FORMAT_PCM_16), SampleKind::kS16);
}

TEST_F(AudioReaderTest, OggVorbisIsReadAsSaturated16Bit) {
    const std::string path = dir.File("loud.ogg");
    std::vector<float> square(64000);
    for (std::size_t i = 0; i < square.size(); ++i) {
        square[i] = i / 50 % 2 == 0 ? 1.0F : -1.0F;
    }
    WriteSound<float>(path, {32000, 1, SF_FORMAT_OGG | SF_FORMAT_VORBIS, square});
    AudioReader reader(path);
    std::vector<short> samples(64000);
    ASSERT_EQ(reader.Read(samples.data(), 64000), 64000U);
    int turns = 0;
    for (std::size_t i = 100; i + 10 < samples.size(); ++i) {
        const bool nearEdge = i % 50 < 5 || i % 50 > 45;
        turns += !nearEdge && (samples[i] > 0) != (i / 50 % 2 == 0) ? 1 : 0;
    }
    EXPECT_EQ(turns, 0) << "no sample has wrapped around";
}

TEST_F(AudioReaderTest, WhatIsNotAWholeRecordingIsRefusedWithItsReason) {
    EXPECT_EQ(FailureOf(dir.File("none.wav")), dir.File("none.wav") + ": no such file");
    EXPECT_EQ(FailureOf(dir.File("")), dir.File("") + ": not a regular file");
    WriteFile(dir.File("text.wav"), "this is not audio\n");
    EXPECT_EQ(FailureOf(dir.File("text.wav")),
              dir.File("text.wav") + ": not a WAV, FLAC or Ogg file");
    WriteFile(dir.File("empty.wav"), "");
    EXPECT_EQ(FailureOf(dir.File("empty.wav")),
              dir.File("empty.wav") + ": not a WAV, FLAC or Ogg file");
    const std::string silent = Write("silent.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1, 0);
    EXPECT_EQ(FailureOf(silent), silent + ": holds no audio");
    const std::string three = Write("three.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 3, 300);
    EXPECT_EQ(FailureOf(three), three + ": has 3 channels; one or two are taken");
    const std::string aiff = Write("a.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16);
    EXPECT_EQ(FailureOf(aiff), aiff + ": not a WAV, FLAC or Ogg file");
}

TEST_F(AudioReaderTest, ATruncatedFileOfAnyContainerIsRefused) {
    for (const auto& [name, format] :
         std::vector<std::pair<std::string, int>>{{"a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16},
                                                  {"b.wav", SF_FORMAT_WAVEX | SF_FORMAT_FLOAT},
                                                  {"c.wav", SF_FORMAT_RF64 | SF_FORMAT_PCM_16},
                                                  {"d.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
                                                  {"e.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS}}) {
        const std::string path = Cut(Write(name, format, 1, 200'000));
        EXPECT_NE(FailureOf(path).find("truncated"), std::string::npos) << name;
    }
}

TEST_F(AudioReaderTest, AWavCutRightAfterItsHeaderIsTruncatedToo) {
    const std::string path = Write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    fs::resize_file(path, 44);
    EXPECT_EQ(FailureOf(path), path + ": is truncated");
}

TEST_F(AudioReaderTest, AWavOfUnknownLengthAsWrittenIntoAPipeIsReadToItsEnd) {
    const std::string path = Write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    std::string bytes = ReadFile(path);
    for (const std::size_t size : {std::size_t{4}, bytes.find("data") + 4}) {
        bytes.replace(size, 4, "\xff\xff\xff\xff");
    }
    WriteFile(path, bytes);
    EXPECT_EQ(FailureOf(path), "");
    EXPECT_EQ(AudioReader(path).Frames(), 20000);
}

TEST_F(AudioReaderTest, AFlacWithDamagedFramesIsRefused) {
    const std::string path = Write("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 1, 200'000);
    std::string bytes = ReadFile(path);
    bytes.replace(bytes.size() / 2, 2000, std::string(2000, '\x55'));
    WriteFile(path, bytes);
    EXPECT_NE(FailureOf(path).find("truncated or damaged"), std::string::npos);
}

}  // namespace
