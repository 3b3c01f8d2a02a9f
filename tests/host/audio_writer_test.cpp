#include "host/audio_writer.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "host/failure.h"
#include "sound_files.h"
#include "support/posix/full_disk.h"
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
    AudioWriter writer(path, {32000, 1, SampleFormat::kS16}, 1000);
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
    AudioWriter writer(path, {32000, 1, SampleFormat::kS16}, std::nullopt);
    WriteThrough(writer, Ramp(1000));
    writer.Commit();
    EXPECT_EQ(ReadSound<short>(path).samples, Ramp(1000));
    EXPECT_EQ(ReadFile(path).substr(0, 4), "RIFF") << "plain WAV again if it stays short";
    AudioWriter known(path, {32000, 1, SampleFormat::kS16}, std::int64_t{1} << 32);
    WriteThrough(known, Ramp(1000));
    known.Commit();
    EXPECT_EQ(ReadSound<short>(path).samples, Ramp(1000));
}

TEST_F(AudioWriterTest, WithoutCommitNoFileRemains) {
    {
        AudioWriter writer(dir.File("out.flac"), {32000, 1, SampleFormat::kS16}, 1000);
        WriteThrough(writer, Ramp(1000));
    }
    EXPECT_EQ(dir.Names().size(), 0U);
}

TEST_F(AudioWriterTest, AnOutputThatCannotBeOpenedLeavesNoFile) {
    EXPECT_THROW(AudioWriter(dir.File("no/such/out.wav"), {32000, 1, SampleFormat::kS16}, 1000),
                 Failure);
    EXPECT_THROW(AudioWriter(dir.File("out.flac"), {700'000, 1, SampleFormat::kS16}, 1000),
                 Failure);
    EXPECT_EQ(dir.Names().size(), 0U);
}

TEST_F(AudioWriterTest, FloatsAreFloatInWavAndSaturated24BitInFlac) {
    const std::vector<float> samples = {0.5F, -0.25F, 1.5F, -1.5F};
    AudioWriter wav(dir.File("a.wav"), {48000, 1, SampleFormat::kFloat}, 1000);
    WriteThrough(wav, samples);
    wav.Commit();
    const Sound<float> floats = ReadSound<float>(dir.File("a.wav"));
    EXPECT_EQ(floats.format & SF_FORMAT_SUBMASK, SF_FORMAT_FLOAT);
    EXPECT_EQ(floats.samples, samples);
    AudioWriter flac(dir.File("a.FLAC"), {48000, 1, SampleFormat::kFloat}, 1000);
    WriteThrough(flac, samples);
    flac.Commit();
    const Sound<float> integers = ReadSound<float>(dir.File("a.FLAC"));
    EXPECT_EQ(integers.format, SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
    EXPECT_NEAR(integers.samples[0], 0.5F, 1e-6F);
    EXPECT_NEAR(integers.samples[2], 1.0F, 1e-6F);
    EXPECT_NEAR(integers.samples[3], -1.0F, 1e-6F);
}

TEST_F(AudioWriterTest, AnOutputThroughASymbolicLinkReplacesItsTarget) {
    WriteFile(dir.File("real.wav"), "old");
    fs::create_symlink(dir.File("real.wav"), dir.File("link.wav"));
    AudioWriter writer(dir.File("link.wav"), {32000, 1, SampleFormat::kS16}, 1000);
    WriteThrough(writer, Ramp(10));
    writer.Commit();
    EXPECT_TRUE(fs::is_symlink(dir.File("link.wav")));
    EXPECT_EQ(ReadSound<short>(dir.File("real.wav")).samples, Ramp(10));
}

TEST_F(AudioWriterTest, AnOutputThroughADanglingLinkCreatesItsTarget) {
    fs::create_directory(dir.File("folder"));
    fs::create_symlink("folder/real.wav", dir.File("link.wav"));
    AudioWriter writer(dir.File("link.wav"), {32000, 1, SampleFormat::kS16}, 1000);
    WriteThrough(writer, Ramp(10));
    writer.Commit();
    EXPECT_TRUE(fs::is_symlink(dir.File("link.wav")));
    EXPECT_EQ(ReadSound<short>(dir.File("folder/real.wav")).samples, Ramp(10));
    fs::create_symlink("round.wav", dir.File("round.wav"));
    EXPECT_THROW(AudioWriter(dir.File("round.wav"), {32000, 1, SampleFormat::kS16}, 1), Failure);
    EXPECT_TRUE(fs::is_symlink(dir.File("round.wav")));
}

TEST_F(AudioWriterTest, ANameOf255BytesIsWrittenAndOneOf256RefusedBeforeAnyWork) {
    const std::string name = std::string(251, 'n') + ".wav";
    AudioWriter writer(dir.File(name), {32000, 1, SampleFormat::kS16}, 10);
    WriteThrough(writer, Ramp(10));
    writer.Commit();
    EXPECT_EQ(dir.Names(), std::vector<std::string>{name});
    EXPECT_THROW(AudioWriter::CheckPath(dir.File("n" + name)), Failure);
}

TEST_F(AudioWriterTest, AReplacedFilePassesOnItsPermissions) {
    WriteFile(dir.File("out.wav"), "old");
    const fs::perms own = fs::perms::owner_read | fs::perms::owner_write;
    for (const fs::perms permissions : {own, own | fs::perms::group_write}) {
        fs::permissions(dir.File("out.wav"), permissions);
        AudioWriter writer(dir.File("out.wav"), {32000, 1, SampleFormat::kS16}, 10);
        WriteThrough(writer, Ramp(10));
        writer.Commit();
        EXPECT_EQ(fs::status(dir.File("out.wav")).permissions(), permissions);
    }
}

TEST_F(AudioWriterTest, AReadOnlyFileIsNotReplaced) {
    WriteFile(dir.File("out.wav"), "to be kept");
    fs::permissions(dir.File("out.wav"), fs::perms::owner_read);
    fs::permissions(dir.File(""), fs::perms::all);
    const auto checkAsUser = [this] {
        const bool isUser = geteuid() != 0 || setuid(65534) == 0;  // root may write anything
        try {
            AudioWriter::CheckPath(dir.File("out.wav"));
        } catch (const Failure& failure) {
            std::cerr << failure.what();
            std::exit(isUser ? 1 : 2);
        }
        std::exit(0);
    };
    EXPECT_EXIT(checkAsUser(), testing::ExitedWithCode(1), "out.wav: cannot be written");
}

TEST_F(AudioWriterTest, AFileThatAppearsMeanwhileIsNotReplacedUnlessAllowed) {
    const std::string path = dir.File("out.wav");
    for (const bool replace : {false, true}) {
        AudioWriter writer(path, {32000, 1, SampleFormat::kS16}, 3, {}, {}, replace);
        WriteThrough(writer, std::vector<short>{1, 2, 3});
        WriteFile(path, "of another program");
        if (replace) {
            writer.Commit();
        } else {
            EXPECT_THROW(writer.Commit(), Failure);
        }
        EXPECT_EQ(ReadFile(path) == "of another program", !replace);
        fs::remove(path);
    }
    EXPECT_TRUE(fs::is_empty(dir.File("")));
}

TEST_F(AudioWriterTest, EqualSamplesGiveEqualBytesAtAnyTimeOfDay) {
    const std::vector<float> samples = {0.5F, -0.25F, 1.0F};
    AudioWriter writer(dir.File("out.wav"), {32000, 1, SampleFormat::kFloat}, 3);
    WriteThrough(writer, samples);
    writer.Commit();
    const std::string bytes = ReadFile(dir.File("out.wav"));
    EXPECT_EQ(bytes.find("PEAK"), std::string::npos) << "that chunk contains a time stamp";
    EXPECT_EQ(ReadSound<float>(dir.File("out.wav")).samples, samples);
}

TEST_F(AudioWriterTest, RatesThatFlacCannotStoreAreRefusedWithAReason) {
    const auto failureOf = [this](int rate) -> std::string {
        try {
            AudioWriter writer(dir.File("out.flac"), {rate, 1, SampleFormat::kS16}, 100);
            WriteThrough(writer, Ramp(100));
            writer.Commit();
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "";
    };
    for (const int rate : {1, 65535, 65540, 96000, 655350}) {
        EXPECT_EQ(failureOf(rate), "") << rate;
    }
    for (const int rate : {65536, 100'001, 655'360, 700'000}) {
        EXPECT_EQ(failureOf(rate), dir.File("out.flac") + ": FLAC cannot store " +
                                       std::to_string(rate) + " Hz; use a .wav file");
    }
}

TEST_F(AudioWriterTest, AWavOf4GBLess65536BytesIsPlainAndOneFrameMoreMakesItRF64) {
    // A file that may become RF64 reserves room for the longer size after its magic.
    const auto keepsRoom = [this](SampleFormat samples, int channels, std::int64_t frames) {
        AudioWriter writer(dir.File("out.wav"), {32000, channels, samples}, frames);
        const std::vector<short> silence(20'000);
        writer.Write(silence.data(), 10'000);
        return ReadFile(dir.File(dir.Names().at(0))).substr(12, 4) != "fmt ";
    };
    const std::int64_t most = 0xFFFF0000;
    EXPECT_FALSE(keepsRoom(SampleFormat::kS16, 1, most / 2));
    EXPECT_TRUE(keepsRoom(SampleFormat::kS16, 1, most / 2 + 1));
    EXPECT_FALSE(keepsRoom(SampleFormat::kFloat, 2, most / 8));
    EXPECT_TRUE(keepsRoom(SampleFormat::kFloat, 2, most / 8 + 1));
}

TEST_F(AudioWriterTest, ADiskThatFillsUpAnywhereInTheLast4KBLeavesNoFile) {
    for (const char* name : {"out.wav", "out.flac"}) {
        const auto isWritten = [&](rlim_t limit) {
            const FullDisk disk(limit);
            try {
                AudioWriter writer(dir.File(name), {32000, 1, SampleFormat::kS16}, 30'000);
                WriteThrough(writer, Ramp(30'000));
                writer.Commit();
                return true;
            } catch (const Failure&) {
                return false;
            }
        };
        ASSERT_TRUE(isWritten(1'000'000));
        const std::string whole = ReadFile(dir.File(name));
        fs::remove(dir.File(name));
        for (rlim_t missing = 1; missing <= 4096; missing += missing < 64 ? 1 : 61) {
            EXPECT_FALSE(isWritten(whole.size() - missing)) << name << " " << missing;
            EXPECT_EQ(dir.Names().size(), 0U) << name << " " << missing;
        }
        EXPECT_TRUE(isWritten(whole.size()));
        EXPECT_EQ(ReadFile(dir.File(name)), whole);
        fs::remove(dir.File(name));
    }
}

TEST_F(AudioWriterTest, OutputsOtherThanWavOrFlacAreRefusedByTheirExtension) {
    for (const char* name : {"out", "out.mp3", "out.ogg", "out.wav.txt"}) {
        EXPECT_THROW(AudioWriter::CheckPath(dir.File(name)), Failure) << name;
    }
    fs::create_directory(dir.File("folder.wav"));
    EXPECT_THROW(AudioWriter::CheckPath(dir.File("folder.wav")), Failure);
    EXPECT_NO_THROW(AudioWriter::CheckPath(dir.File("out.WAV")));
}

}  // namespace
