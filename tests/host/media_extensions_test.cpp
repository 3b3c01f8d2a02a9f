#include "host/media_extensions.h"

#include <gtest/gtest.h>

namespace {

TEST(MediaExtensions, RecordingsAreFoundByExtensionInAnyCase) {
    for (const char* name : {"a.wav", "a.FLAC", "a.b.Mp3", "a.mkv", "a.aif"}) {
        EXPECT_TRUE(IsRecording(name)) << name;
    }
    for (const char* name : {"wav", ".wav", "a.txt", "a.wav.part", "a."}) {
        EXPECT_FALSE(IsRecording(name)) << name;
    }
}

TEST(MediaExtensions, TheOutputKeepsAnExtensionThatCanBeWrittenElseItIsWav) {
    EXPECT_EQ(OutputExtension("a.flac"), ".flac");
    EXPECT_EQ(OutputExtension("a.WAV"), ".WAV");
    EXPECT_EQ(OutputExtension("a.amr"), ".wav");
    EXPECT_EQ(OutputExtension("a"), ".wav");
}

}  // namespace
