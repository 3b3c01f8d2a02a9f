// Files and streams through pipes.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>

#include "command_line_fixture.h"
#include "host/audio_reader.h"
#include "sound_files.h"
#include "support/temp_dir.h"

namespace {

class PipedFile : public testing::Test {
protected:
    /// Runs a shell command in which `$clean` is the program with its subcommand.
    int Run(const std::string& line) {
        const std::string clean =
            "cd '" + dir.File("") + "' && clean=\"'" AUDIO_FILTER_EXECUTABLE "' clean\"; ";
        return WEXITSTATUS(std::system((clean + "eval \"" + line + "\"").c_str()));
    }
    /// Cleans a file into file.wav, in this process.
    int Clean(const std::string& name) {
        return RunHost({"clean", File(name), "-o", File("file.wav"), "--denoise", "off", "--quiet"})
            .status;
    }
    std::string File(const std::string& name) { return dir.File(name); }
    std::string Err() { return ReadFile(File("err")); }

    /// @return its path
    std::string Write(const std::string& name, int format, int channels = 1) {
        WriteSound<float>(File(name), {32000, channels, format, Bursts(64000, 32000)});
        return File(name);
    }

    TempDir dir;
};

TEST_F(PipedFile, WavOfEverySampleFormatIsReadFromAPipeAsFromAFile) {
    const int wav = SF_FORMAT_WAV;
    for (const int format :
         {wav | SF_FORMAT_PCM_U8, wav | SF_FORMAT_PCM_16, wav | SF_FORMAT_PCM_24,
          wav | SF_FORMAT_PCM_32, wav | SF_FORMAT_FLOAT, wav | SF_FORMAT_DOUBLE,
          SF_FORMAT_WAVEX | SF_FORMAT_PCM_24, SF_FORMAT_RF64 | SF_FORMAT_PCM_16}) {
        for (const int channels : {1, 2}) {
            Write("in.wav", format, channels);
            ASSERT_EQ(Clean("in.wav"), 0);
            const std::string expected = ReadFile(File("file.wav"));
            ASSERT_EQ(Run("cat in.wav | $clean - -o pipe.wav --denoise off --quiet --strict"), 0)
                << Err();
            EXPECT_TRUE(ReadFile(File("pipe.wav")) == expected) << std::hex << format;
        }
    }
}

TEST_F(PipedFile, NamedPipesStandardInputAndOtherContainersAreInputsLikeFiles) {
    Write("in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    Write("in.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    Write("in.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    Write("in.law", SF_FORMAT_WAV | SF_FORMAT_ULAW);
    ASSERT_EQ(mkfifo(File("pipe").c_str(), 0600), 0);
    for (const std::string name : {"in.wav", "in.flac", "in.ogg"}) {
        ASSERT_EQ(Clean(name), 0);
        const std::string expected = ReadFile(File("file.wav"));
        for (const std::string& line :
             {"cat " + name + " | $clean - -o out.wav --denoise off --quiet",
              "cat " + name + " | $clean /dev/stdin -o out.wav --denoise off --quiet",
              "$clean - -o out.wav --denoise off --quiet <" + name,
              "cat " + name + " >pipe & $clean pipe -o out.wav --denoise off --quiet"}) {
            EXPECT_EQ(Run("rm -f out.wav; " + line + " 2>err"), 0) << line << Err();
            EXPECT_TRUE(ReadFile(File("out.wav")) == expected) << line;
        }
    }
    EXPECT_EQ(Run("$clean - -o out.wav --denoise off --quiet <in.law"), 0) << "a file";
    EXPECT_EQ(Run("cat in.law | $clean - -o out.wav --denoise off --quiet 2>err"), 1);
    EXPECT_NE(Err().find("only integers and floats can be read from a pipe"), std::string::npos);
}

TEST_F(PipedFile, AWavStreamIsWrittenAndReadBack) {
    for (const int format : {SF_FORMAT_PCM_16, SF_FORMAT_FLOAT}) {
        Write("in.wav", SF_FORMAT_WAV | format, 2);
        ASSERT_EQ(Run("$clean in.wav -o file.wav --quiet"), 0);
        ASSERT_EQ(Run("$clean in.wav --wav --quiet -o - | cat >stream.wav"), 0);
        EXPECT_EQ(ReadFile(File("stream.wav")).substr(0, 8), "RIFF\xff\xff\xff\xff");
        const Sound<float> stream = ReadSound<float>(File("stream.wav"));
        const Sound<float> file = ReadSound<float>(File("file.wav"));
        EXPECT_EQ(stream.samples, file.samples);
        EXPECT_EQ(stream.channels, 2);
        EXPECT_EQ(stream.sampleRate, 32000);
        EXPECT_EQ(stream.format & SF_FORMAT_SUBMASK, format);
        ASSERT_EQ(Run("cat stream.wav | $clean - --denoise off --wav -o - 2>err | cat >again.wav"),
                  0);
        EXPECT_EQ(ReadFile(File("again.wav")).size(), ReadFile(File("stream.wav")).size());
        EXPECT_EQ(Err().find("warning"), std::string::npos) << "an unknown length is usual here";
    }
}

TEST_F(PipedFile, ACutStreamIsReadUpToThereWithAWarningAndRefusedWhenStrict) {
    Write("in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    EXPECT_EQ(Run("head -c 64045 in.wav | $clean - -o out.wav --quiet 2>err"), 0);
    EXPECT_EQ(Err(), "audio-filter: warning: standard input: is cut off after 1.00 s\n");
    EXPECT_EQ(ReadSound<short>(File("out.wav")).samples.size(), 32000U);
    EXPECT_EQ(Run("head -c 64045 in.wav | $clean - -o cut.wav --strict 2>err"), 1);
    EXPECT_EQ(Err(), "audio-filter: standard input: is truncated\n");
    for (const char* bytes : {"1", "12", "30", "43"}) {
        EXPECT_EQ(Run(std::string("head -c ") + bytes + " in.wav | $clean - -o cut.wav 2>err"), 1);
        EXPECT_EQ(Err().find("audio-filter: standard input: "), 0U) << Err();
    }
    EXPECT_EQ(Run("test -e cut.wav"), 1);
}

TEST_F(PipedFile, WhatIsNoAudioIsRefusedWithTheRemedy) {
    Write("in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    EXPECT_EQ(Run("cat in.wav | $clean - --raw s16:32000:1 -o out.wav 2>err"), 1);
    EXPECT_EQ(Err(),
              "audio-filter: standard input: is a WAV, FLAC or Ogg file, not raw samples: omit "
              "--raw\n");
    EXPECT_EQ(Run("tail -c 10000 in.wav | $clean - -o out.wav 2>err"), 1);
    EXPECT_EQ(
        Err(),
        "audio-filter: standard input: not a WAV, FLAC or Ogg file; raw samples need --raw\n");
    EXPECT_EQ(Run(": | $clean - -o out.wav 2>err"), 1);
    EXPECT_EQ(Err(), "audio-filter: standard input: contains no audio\n");
}

}  // namespace
