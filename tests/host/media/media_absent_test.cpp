// Builds without AUDIO_FILTER_MEDIA.
#include <gtest/gtest.h>

#include "host/command_line_fixture.h"

namespace {

class MediaAbsent : public CommandLineTest {};

TEST_F(MediaAbsent, AMediaFileIsRefusedWithTheOptionThatIsMissing) {
    WriteFile(File("talk.mp4"),
              "\x00\x00\x00\x18"
              "ftypisom");
    const Outcome in = RunHost({"clean", File("talk.mp4"), "-o", File("out.wav")});
    EXPECT_EQ(in.status, 1);
    EXPECT_EQ(in.err, "audio-filter: " + File("talk.mp4") +
                          ": not a WAV, FLAC or Ogg file; this build lacks AUDIO_FILTER_MEDIA, "
                          "which reads other formats\n");
    const Outcome out = RunHost({"clean", Speech(), "-o", File("out.mp3")});
    EXPECT_EQ(out.status, 1);
    EXPECT_NE(out.err.find("AUDIO_FILTER_MEDIA"), std::string::npos) << out.err;
}

}  // namespace
