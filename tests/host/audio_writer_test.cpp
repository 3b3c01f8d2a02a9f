#include "host/audio_writer.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "host/failure.h"
#include "sound_files.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

class AudioWriterTest : public testing::Test {
protected:
    TempDir dir;
};

template <typename Sample>
void WriteThrough(AudioWriter& writer, const std::vector<Sample>& samples) {
    writer.Write(samples.data(), samples.size() / 2);
    writer.Write(samples.data() + samples.size() / 2, samples.size() - samples.size() / 2);
}

TEST_F(AudioWriterTest, AFileAppearsAtCommitAndNotBefore) {
    const std::string path = dir.File("out.wav");
    AudioWriter writer(path, {32000, 1, SampleKind::kS16}, 1000);
    WriteThrough(writer, Ramp(1000));
    EXPECT_FALSE(fs::exists(path));
    writer.Commit();
    EXPECT_EQ(dir.Names(), std::vector<std::string>{"out.wav"});
    const Sound<short> sound = ReadSound<short>(path);
    EXPECT_EQ(sound.samples, Ramp(1000));
    EXPECT_EQ(sound.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
}

TEST_F(AudioWriterTest, AWavThatMayBecomeLongerThan4GBIsRF64UntilItsLengthIsKnown) {
    const std::string path = dir.File("out.wav");
    AudioWriter writer(path, {32000, 1, SampleKind::kS16}, std::nullopt);
    WriteThrough(writer, Ramp(1000));
    writer.Commit();
    EXPECT_EQ(ReadSound<short>(path).samples, Ramp(1000));
    EXPECT_EQ(ReadFile(path).substr(0, 4), "RIFF") << "plain again when it stayed short";
    AudioWriter known(path, {32000, 1, SampleKind::kS16}, std::int64_t{1} << 32);
    WriteThrough(known, Ramp(1000));
    known.Commit();
    EXPECT_EQ(ReadSound<short>(path).samples, Ramp(1000));
}

TEST_F(AudioWriterTest, WithoutCommitNothingIsLeft) {
    {
        AudioWriter writer(dir.File("out.flac"), {32000, 1, SampleKind::kS16}, 1000);
        WriteThrough(writer, Ramp(1000));
    }
    EXPECT_EQ(dir.Names().size(), 0U);
}

TEST_F(AudioWriterTest, AnOutputThatCannotBeOpenedLeavesNothing) {
    EXPECT_THROW(AudioWriter(dir.File("no/such/out.wav"), {32000, 1, SampleKind::kS16}, 1000),
                 Failure);
    EXPECT_THROW(AudioWriter(dir.File("out.flac"), {700'000, 1, SampleKind::kS16}, 1000), Failure);
    EXPECT_EQ(dir.Names().size(), 0U);
}

TEST_F(AudioWriterTest, FloatsAreFloatInWavAndSaturated24BitInFlac) {
    const std::vector<float> samples = {0.5F, -0.25F, 1.5F, -1.5F};
    AudioWriter wav(dir.File("a.wav"), {48000, 1, SampleKind::kFloat}, 1000);
    WriteThrough(wav, samples);
    wav.Commit();
    const Sound<float> floats = ReadSound<float>(dir.File("a.wav"));
    EXPECT_EQ(floats.format & SF_FORMAT_SUBMASK, SF_FORMAT_FLOAT);
    EXPECT_EQ(floats.samples, samples);
    AudioWriter flac(dir.File("a.FLAC"), {48000, 1, SampleKind::kFloat}, 1000);
    WriteThrough(flac, samples);
    flac.Commit();
    const Sound<float> integers = ReadSound<float>(dir.File("a.FLAC"));
    EXPECT_EQ(integers.format, SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
    EXPECT_NEAR(integers.samples[0], 0.5F, 1e-6F);
    EXPECT_NEAR(integers.samples[2], 1.0F, 1e-6F);
    EXPECT_NEAR(integers.samples[3], -1.0F, 1e-6F);
}

TEST_F(AudioWriterTest, AnOutputThroughASymbolicLinkReplacesWhatItPointsTo) {
    WriteFile(dir.File("real.wav"), "old");
    fs::create_symlink(dir.File("real.wav"), dir.File("link.wav"));
    AudioWriter writer(dir.File("link.wav"), {32000, 1, SampleKind::kS16}, 1000);
    WriteThrough(writer, Ramp(10));
    writer.Commit();
    EXPECT_TRUE(fs::is_symlink(dir.File("link.wav")));
    EXPECT_EQ(ReadSound<short>(dir.File("real.wav")).samples, Ramp(10));
}

TEST_F(AudioWriterTest, OutputsThatAreNotWavOrFlacFilesAreRefusedByName) {
    for (const char* name : {"out", "out.mp3", "out.ogg", "out.wav.txt"}) {
        EXPECT_THROW(AudioWriter::CheckPath(dir.File(name)), Failure) << name;
    }
    fs::create_directory(dir.File("folder.wav"));
    EXPECT_THROW(AudioWriter::CheckPath(dir.File("folder.wav")), Failure);
    EXPECT_NO_THROW(AudioWriter::CheckPath(dir.File("out.WAV")));
}

}  // namespace
