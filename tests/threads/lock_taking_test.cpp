/// Which operations take the lock of their object, beside what their headers say of threads.

#include <gtest/gtest.h>

#include <memory>

#include "classifier/audio_classifier.h"
#include "log/media_process_log.h"
#include "support/posix/lock_calls.h"
#include "threads/operations.h"

namespace {

bool TakesItsLock(const Subject& subject, const Operation& operation) {
    // The mutex is the first that a lock holds.
    const LockCalls calls(subject.lock);
    operation.run();
    return calls.OfTheOne() > 0;
}

TEST(LockTaking, WhatIsTaggedAnyOrAudioTakesTheLockOfItsObject) {
    for (const auto& make : AllSubjects()) {
        for (std::size_t i = 0; i < make().sideBySide.size(); ++i) {
            const Subject subject = make();
            if (subject.lock != nullptr) {
                EXPECT_TRUE(TakesItsLock(subject, subject.sideBySide[i]))
                    << subject.className << "::" << subject.sideBySide[i].name
                    << " must not be tagged so: nothing keeps others out";
            }
        }
    }
}

TEST(LockTaking, WhatIsTaggedSetupTakesNoLockButInits) {
    for (const auto& make : AllSubjects()) {
        const Subject subject = make();
        for (const Operation& operation : subject.alone) {
            if (subject.lock != nullptr && operation.name != "Init") {
                EXPECT_FALSE(TakesItsLock(subject, operation))
                    << subject.className << "::" << operation.name
                    << " keeps others out: the tag could be [any]";
            }
        }
    }
}

TEST(LockTaking, ALoggerWhoseLockItsThreadHoldsThreeTimesFreesItBeforeItIsDestroyed) {
    auto log = std::make_unique<MediaProcessLog>();
    EXPECT_EQ(log->Init(PROCESS_LOG_DEBUG, ""), 3);
    EXPECT_EQ(log->WriteLog(PROCESS_LOG_DEBUG, ""), 0);
    EXPECT_EQ(log->WriteLog(PROCESS_LOG_ERROR, ""), 4);
    const LockCalls calls(&log->mLock);
    log.reset();
    EXPECT_TRUE(calls.IsTheOneDestroyed());
}

TEST(LockTaking, TheInitOfADetectorTakesNoMutexWhetherItsTableIsThereOrNot) {
    for (int i = 0; i < 2; ++i) {
        AudioClassifier detector;
        const LockCalls calls;
        detector.Init(2, 44100, SAMPLE_FMT_S16);
        EXPECT_EQ(calls.Locks(), 0);
    }
}

}  // namespace
