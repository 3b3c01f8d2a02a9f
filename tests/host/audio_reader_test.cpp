#include "host/audio_reader.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "host/failure.h"
#include "sound_files.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

/// Why a file is refused where nothing may be missing.
std::string FailureOf(const std::string& path) {
    try {
        AudioReader reader(path, {true});
        std::vector<float> block(1000);
        while (reader.Read(block.data(), 400) > 0) {
        }
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "";
}

/// A number in the byte order of WAV files.
std::string Number(std::size_t number, std::size_t bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes; ++i) {
        text += static_cast<char>(number >> (8 * i));
    }
    return text;
}

class AudioReaderTest : public testing::Test {
protected:
    std::string Write(const std::string& name, int format, int channels = 1,
                      std::size_t samples = 20000) {
        const std::string path = dir.File(name);
        WriteSound<short>(path, {32000, channels, format, Ramp(samples)});
        return path;
    }

    /// Truncates the file by a third.
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
    EXPECT_EQ(reader.Format().samples, SampleFormat::kS16);
    EXPECT_EQ(reader.Frames(), 10000);
    std::vector<short> samples(20000);
    EXPECT_EQ(reader.Read(samples.data(), 6000), 6000U);
    EXPECT_EQ(reader.Read(samples.data() + 12000, 6000), 4000U);
    EXPECT_EQ(samples, Ramp(20000));
    EXPECT_EQ(reader.Read(samples.data(), 1), 0U);
}

TEST_F(AudioReaderTest, IntegersOfUpTo16BitsAndLossyCodecsAre16BitAndTheRestFloat) {
    const auto samplesOf = [this](int format) {
        return AudioReader(Write("a", format)).Format().samples;
    };
    EXPECT_EQ(samplesOf(SF_FORMAT_WAV | SF_FORMAT_PCM_U8), SampleFormat::kS16);
    EXPECT_EQ(samplesOf(SF_FORMAT_WAV | SF_FORMAT_ULAW), SampleFormat::kS16);
    EXPECT_EQ(samplesOf(SF_FORMAT_FLAC | SF_FORMAT_PCM_16), SampleFormat::kS16);
    EXPECT_EQ(samplesOf(SF_FORMAT_OGG | SF_FORMAT_VORBIS), SampleFormat::kS16);
    EXPECT_EQ(samplesOf(SF_FORMAT_WAV | SF_FORMAT_PCM_24), SampleFormat::kFloat);
    EXPECT_EQ(samplesOf(SF_FORMAT_WAV | SF_FORMAT_PCM_32), SampleFormat::kFloat);
    EXPECT_EQ(samplesOf(SF_FORMAT_WAV | SF_FORMAT_FLOAT), SampleFormat::kFloat);
    EXPECT_EQ(samplesOf(SF_FORMAT_WAV | SF_FORMAT_DOUBLE), SampleFormat::kFloat);
    EXPECT_EQ(samplesOf(SF_FORMAT_FLAC | SF_FORMAT_PCM_24), SampleFormat::kFloat);
    EXPECT_EQ(samplesOf(SF_FORMAT_WAVEX | SF_FORMAT_PCM_16), SampleFormat::kS16);
    EXPECT_EQ(samplesOf(SF_FORMAT_RF64 | SF_FORMAT_PCM_16), SampleFormat::kS16);
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
    EXPECT_EQ(turns, 0) << "no sample wraps around";
}

TEST_F(AudioReaderTest, IncompleteOrUnsupportedFilesAreRefusedWithAReason) {
    EXPECT_EQ(FailureOf(dir.File("none.wav")), dir.File("none.wav") + ": no such file");
    EXPECT_EQ(FailureOf(dir.File("")), dir.File("") + ": not a regular file");
    WriteFile(dir.File("text.wav"), "this is not audio\n");
    EXPECT_EQ(FailureOf(dir.File("text.wav")),
              dir.File("text.wav") + ": not a WAV, FLAC or Ogg file");
    WriteFile(dir.File("empty.wav"), "");
    EXPECT_EQ(FailureOf(dir.File("empty.wav")),
              dir.File("empty.wav") + ": not a WAV, FLAC or Ogg file");
    const std::string silent = Write("silent.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 1, 0);
    EXPECT_EQ(FailureOf(silent), silent + ": contains no audio");
    const std::string nine = Write("nine.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 9, 900);
    EXPECT_EQ(FailureOf(nine), nine + ": has 9 channels; at most 8 are supported");
}

TEST_F(AudioReaderTest, AiffCafAuAndWave64AreReadSampleBySample) {
    for (const int container : {SF_FORMAT_AIFF, SF_FORMAT_CAF, SF_FORMAT_AU, SF_FORMAT_W64}) {
        AudioReader reader(Write("a", container | SF_FORMAT_PCM_16, 2));
        std::vector<short> samples(20000);
        EXPECT_EQ(reader.Read(samples.data(), 10000), 10000U) << container;
        EXPECT_EQ(samples, Ramp(20000)) << container;
    }
    const std::string cut = Cut(Write("a.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16));
    EXPECT_EQ(FailureOf(cut), cut + ": is truncated or damaged");
}

TEST_F(AudioReaderTest, EightChannelsAreReadInTheirOrder) {
    AudioReader reader(Write("a.wav", SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 8, 16000));
    EXPECT_EQ(reader.Format().channels, 8);
    std::vector<short> samples(16000);
    EXPECT_EQ(reader.Read(samples.data(), 2000), 2000U);
    EXPECT_EQ(samples, Ramp(16000));
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

TEST_F(AudioReaderTest, AWavThatEndsAfterItsHeaderIsTruncated) {
    const std::string path = Write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    fs::resize_file(path, 44);
    EXPECT_EQ(FailureOf(path), path + ": is truncated");
}

/// Inserts a chunk before the audio of a WAV file.
void InsertChunk(const std::string& path, const std::string& id, const std::string& body) {
    std::string bytes = ReadFile(path);
    const std::string padding(body.size() % 2, '\0');
    bytes.insert(bytes.find("data"), id + Number(body.size(), 4) + body + padding);
    bytes.replace(4, 4, Number(bytes.size() - 8, 4));
    WriteFile(path, bytes);
}

TEST_F(AudioReaderTest, ATruncatedWavIsRefusedWhateverChunksPrecedeItsAudio) {
    for (const int format : {SF_FORMAT_WAV, SF_FORMAT_WAVEX}) {
        const std::string path = Write("a.wav", format | SF_FORMAT_PCM_16);
        InsertChunk(path, "LIST", "INFO" + std::string(40'000, 'x'));
        InsertChunk(path, "odd ", "7 bytes");
        InsertChunk(path, "LIST", "INFOICMT" + Number(22, 4) + "\ndata : 1\n*** Calcula\n");
        EXPECT_EQ(FailureOf(path), "");
        fs::resize_file(path, fs::file_size(path) - 2);
        EXPECT_EQ(FailureOf(path), path + ": is truncated");
    }
}

TEST_F(AudioReaderTest, ACommentThatLooksLikeADecoderWarningDoesNotMakeAWavTruncated) {
    const std::string path = Write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    const std::string comment = "\ndata : 9 (should be 1)\n*** Calculated frame count\n";
    InsertChunk(path, "LIST", "INFOICMT" + Number(comment.size(), 4) + comment);
    EXPECT_EQ(FailureOf(path), "");
}

TEST_F(AudioReaderTest, AWavTruncatedAtAnyByteOfItsHeaderIsRefusedInOneLine) {
    const std::string whole = ReadFile(Write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16));
    const std::string path = dir.File("cut.wav");
    for (std::size_t size = 0; size <= 60; ++size) {
        WriteFile(path, whole.substr(0, size));
        EXPECT_EQ(FailureOf(path),
                  path + (size < 12 ? ": not a WAV, FLAC or Ogg file" : ": is truncated"))
            << size;
    }
}

TEST_F(AudioReaderTest, ABigEndianWavIsReadWhenCompleteAndRefusedWhenTruncated) {
    const std::string path = Write("a.wav", SF_FORMAT_WAV | SF_ENDIAN_BIG | SF_FORMAT_PCM_16);
    ASSERT_EQ(ReadFile(path).substr(0, 4), "RIFX");
    EXPECT_EQ(FailureOf(path), "");
    fs::resize_file(path, fs::file_size(path) - 2);
    EXPECT_EQ(FailureOf(path), path + ": is truncated");
}

TEST_F(AudioReaderTest, AWavOf3GBThatEndsEarlyIsTruncated) {
    const std::string path = Write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    std::string bytes = ReadFile(path);
    bytes.replace(bytes.find("data") + 4, 4, Number(3'000'000'000, 4));
    WriteFile(path, bytes);
    EXPECT_EQ(FailureOf(path), path + ": is truncated");
}

TEST_F(AudioReaderTest, AWavOfUnknownLengthAsWrittenToAPipeIsReadToItsEnd) {
    const std::string path = Write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    const std::string bytes = ReadFile(path);
    for (const std::size_t size : {0xFFFFFFFFU, 0xFFFFFFD7U, 0x7FFFF000U, 0x7FFFFFFFU}) {
        std::string streamed = bytes;
        streamed.replace(4, 4, Number(size, 4));
        streamed.replace(bytes.find("data") + 4, 4, Number(size, 4));
        WriteFile(path, streamed);
        EXPECT_EQ(FailureOf(path), "") << size;
        EXPECT_EQ(AudioReader(path).Frames(), 20000) << size;
    }
}

TEST_F(AudioReaderTest, MpegAudioIsRefusedBeforeItsDecoderPrintsAnything) {
    const std::string path = Write("a.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    std::string bytes = ReadFile(path);
    const std::string extension = Number(12, 2) + Number(1, 2) + Number(2, 4) + Number(417, 2) +
                                  Number(1, 2) + Number(1393, 2);
    const std::string format = Number(0x55, 2) + Number(1, 2) + Number(32000, 4) +
                               Number(16000, 4) + Number(1, 2) + Number(0, 2) + extension;
    bytes.replace(12, 24, "fmt " + Number(format.size(), 4) + format);
    bytes.replace(4, 4, Number(bytes.size() - 8, 4));
    WriteFile(path, bytes);
    testing::internal::CaptureStderr();
    const std::string failure = FailureOf(path);
    WriteFile(dir.File("a.mp3"), "\xff\xfb\x90\x64" + Number(0, 4) + ReadFile(path));
    const std::string second = FailureOf(dir.File("a.mp3"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(failure, path + ": contains MPEG audio, which is not supported");
    EXPECT_EQ(second, dir.File("a.mp3") + ": not a WAV, FLAC or Ogg file");
}

/// The offsets of the pages of an Ogg file, and its size.
std::vector<std::size_t> PagesOf(const std::string& bytes) {
    std::vector<std::size_t> pages;
    for (std::size_t at = bytes.find("OggS"); at != std::string::npos;
         at = bytes.find("OggS", at + 4)) {
        pages.push_back(at);
    }
    pages.push_back(bytes.size());
    return pages;
}

TEST_F(AudioReaderTest, AnOggTruncatedAtAnyPageIsRefused) {
    const std::string path = Write("a.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 1, 200'000);
    const std::string bytes = ReadFile(path);
    const std::vector<std::size_t> pages = PagesOf(bytes);
    ASSERT_GT(pages.size(), 5U);
    EXPECT_EQ(FailureOf(path), "");
    for (std::size_t i = 1; i + 1 < pages.size(); ++i) {
        for (const std::size_t more : {0U, 10U, 100U}) {
            WriteFile(path, bytes.substr(0, pages[i] + more));
            EXPECT_EQ(FailureOf(path), path + ": is truncated or damaged") << i << " " << more;
        }
    }
}

TEST_F(AudioReaderTest, AnOggWithAMissingPageOrTrailingJunkIsRefused) {
    const std::string path = Write("a.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, 1, 200'000);
    const std::string bytes = ReadFile(path);
    WriteFile(path, bytes + "junk");
    EXPECT_EQ(FailureOf(path), path + ": is truncated or damaged");
    std::string damaged = bytes;
    damaged.replace(PagesOf(bytes)[3], 4, "oggs");
    WriteFile(path, damaged);
    EXPECT_EQ(FailureOf(path), path + ": is truncated or damaged");
}

TEST_F(AudioReaderTest, AChainedOggOfTwoStreamsIsRefused) {
    const std::string first = Write("a.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    const std::string second = Write("b.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    const std::string path = dir.File("chain.ogg");
    WriteFile(path, ReadFile(first) + ReadFile(second));
    EXPECT_EQ(FailureOf(path), path + ": contains several chained streams; only one is supported");
}

TEST_F(AudioReaderTest, AFlacThatContinuesBeyondItsStatedLengthIsRefused) {
    const std::string path = Write("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    std::string bytes = ReadFile(path);
    for (const std::size_t stated : {1U, 4096U, 19999U}) {
        bytes.replace(22, 4,
                      {static_cast<char>(stated >> 24), static_cast<char>(stated >> 16),
                       static_cast<char>(stated >> 8), static_cast<char>(stated)});
        WriteFile(path, bytes);
        EXPECT_EQ(FailureOf(path), path + ": is damaged: it continues beyond its stated length")
            << stated;
    }
}

TEST_F(AudioReaderTest, AFlacOfUnstatedLengthIsReadToItsEnd) {
    const std::string path = Write("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    EXPECT_EQ(AudioReader(path).Frames(), 20000);
    std::string bytes = ReadFile(path);
    bytes.replace(22, 4, std::string(4, '\0'));
    WriteFile(path, bytes);
    AudioReader reader(path);
    EXPECT_EQ(reader.Frames(), std::nullopt);
    std::vector<short> samples(30000);
    EXPECT_EQ(reader.Read(samples.data(), 30000), 20000U);
    samples.resize(20000);
    EXPECT_EQ(samples, Ramp(20000));
}

TEST_F(AudioReaderTest, ANewlineInAPathDoesNotTruncateTheReason) {
    EXPECT_EQ(FailureOf(dir.File("a\n\tb\x7f.wav")), dir.File("a??b?.wav") + ": no such file");
}

TEST_F(AudioReaderTest, AFlacWithDamagedFramesIsRefused) {
    const std::string path = Write("a.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 1, 200'000);
    std::string bytes = ReadFile(path);
    bytes.replace(bytes.size() / 2, 2000, std::string(2000, '\x55'));
    WriteFile(path, bytes);
    EXPECT_NE(FailureOf(path).find("truncated or damaged"), std::string::npos);
}

}  // namespace
