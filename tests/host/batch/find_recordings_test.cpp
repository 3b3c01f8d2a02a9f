#include "host/batch/find_recordings.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> Below(const std::vector<FoundFile>& files) {
    std::vector<std::string> names;
    names.reserve(files.size());
    for (const FoundFile& file : files) {
        names.push_back(file.problem.empty() ? file.below.string() : file.problem);
    }
    return names;
}

class FindRecordingsTest : public testing::Test {
protected:
    void Make(const std::string& name) {
        fs::create_directories(fs::path(dir.File(name)).parent_path());
        WriteFile(dir.File(name), "");
    }

    TempDir dir;
};

TEST_F(FindRecordingsTest, AllSubfoldersAreSearchedInTheOrderOfNames) {
    for (const char* name : {"b.wav", "a/z.mp3", "a/b/c.FLAC", "c.txt", "a.ogg"}) {
        Make(name);
    }
    EXPECT_EQ(Below(FindRecordings(dir.File(""), "")),
              (std::vector<std::string>{"a/b/c.FLAC", "a/z.mp3", "a.ogg", "b.wav"}));
}

TEST_F(FindRecordingsTest, HiddenNamesLinksToFoldersAndTheExcludedFolderAreLeftOut) {
    for (const char* name : {"a.wav", ".b.wav", ".c/d.wav", "out/e.wav", "sub/out/f.wav"}) {
        Make(name);
    }
    fs::create_directory_symlink(dir.File(""), dir.File("loop"));
    fs::create_symlink(dir.File("a.wav"), dir.File("link.wav"));
    EXPECT_EQ(Below(FindRecordings(dir.File(""), dir.File("out"))),
              (std::vector<std::string>{"a.wav", "link.wav", "sub/out/f.wav"}));
}

TEST_F(FindRecordingsTest, AFolderThatCannotBeReadIsAProblem) {
    const std::vector<FoundFile> found = FindRecordings(dir.File("none"), "");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].path, dir.File("none"));
    EXPECT_EQ(found[0].problem, "cannot be read: No such file or directory");
}

}  // namespace
