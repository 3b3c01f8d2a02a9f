/// Runs every pair of operations that a header allows on two threads, and checks the object's state
/// afterwards. ThreadSanitizer finds the races that leave no trace.

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <utility>

#include "threads/header_tags.h"
#include "threads/operations.h"

namespace {

std::set<std::string> Names(const std::vector<Operation>& operations) {
    std::set<std::string> names;
    for (const Operation& operation : operations) {
        names.insert(operation.name);
    }
    return names;
}

TEST(SideBySide, TheOperationsHereAreThoseTaggedInTheHeaders) {
    for (const auto& make : AllSubjects()) {
        const Subject subject = make();
        std::set<std::string> tagged = TaggedOperations(subject.header, subject.className, "any");
        tagged.merge(TaggedOperations(subject.header, subject.className, "audio"));
        EXPECT_FALSE(tagged.empty()) << subject.header;
        EXPECT_EQ(Names(subject.sideBySide), tagged) << subject.header;
        EXPECT_EQ(Names(subject.alone),
                  TaggedOperations(subject.header, subject.className, "setup"))
            << subject.header;
    }
}

TEST(SideBySide, ClassesWithoutALockHaveNoOperationForAnyThread) {
    for (const auto& [header, className] :
         {std::pair("units/audio_gain.h", "AudioGain"),
          {"units/audio_mixing.h", "AudioMixing"},
          {"units/phase_check.h", "PhaseCheck"},
          {"units/ns_wrap.h", "NSWrap"},
          {"units/audio_denoise.h", "AudioDenoise"},
          {"classifier/audio_classifier.h", "AudioClassifier"},
          {"log/pr_file_log_writer.h", "PRFileLogWriter"},
          {"log/pr_console_log_writer.h", "PRConsoleLogWriter"}}) {
        EXPECT_EQ(TaggedOperations(header, className, "any"), std::set<std::string>()) << header;
        EXPECT_FALSE(TaggedOperations(header, className, "setup").empty()) << header;
    }
}

TEST(SideBySide, EveryTwoOperationsRunBesideEachOtherAndEachBesideItself) {
    for (const auto& make : AllSubjects()) {
        const std::size_t count = make().sideBySide.size();
        for (std::size_t first = 0; first < count; ++first) {
            for (std::size_t second = first; second < count; ++second) {
                for (int round = 0; round < SIDE_BY_SIDE_ROUNDS; ++round) {
                    const Subject subject = make();
                    SCOPED_TRACE(subject.className + (" in " + std::string(subject.header)) + ": " +
                                 subject.sideBySide[first].name + " beside " +
                                 subject.sideBySide[second].name);
                    std::atomic<int> waiting = 2;  // a std::barrier of mingw can lose its wake-up
                    const auto repeat = [&](const Operation& operation) {
                        --waiting;
                        while (waiting > 0) {
                            std::this_thread::yield();
                        }
                        for (int call = 0; call < subject.calls; ++call) {
                            operation.run();
                        }
                    };
                    std::thread other(repeat, subject.sideBySide[second]);
                    repeat(subject.sideBySide[first]);
                    other.join();
                    subject.check();
                    if (testing::Test::HasFailure()) {
                        return;
                    }
                }
            }
        }
    }
}

}  // namespace
