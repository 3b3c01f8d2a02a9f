/// Compares which operations take the lock of their object with the thread tags of the headers.

#include <gtest/gtest.h>

#include <memory>

#include "audio_filter/audio_filter.h"
#include "classifier/audio_classifier.h"
#include "common/result_code.h"
#include "log/media_process_log.h"
#include "support/posix/lock_calls.h"
#include "threads/operations.h"

namespace {

bool TakesItsLock(const Subject& subject, const Operation& operation) {
    // The mutex is the first member of a lock.
    const LockCalls calls(subject.lock);
    operation.run();
    return calls.OfTheOne() > 0;
}

TEST(LockTaking, OperationsTaggedAnyOrAudioTakeTheLockOfTheirObject) {
    for (const auto& make : AllSubjects()) {
        for (std::size_t i = 0; i < make().sideBySide.size(); ++i) {
            const Subject subject = make();
            if (subject.lock != nullptr) {
                EXPECT_TRUE(TakesItsLock(subject, subject.sideBySide[i]))
                    << subject.className << "::" << subject.sideBySide[i].name
                    << " takes no lock, so it cannot be tagged for any thread";
            }
        }
    }
}

TEST(LockTaking, OperationsTaggedSetupTakeNoLockExceptInit) {
    for (const auto& make : AllSubjects()) {
        const Subject subject = make();
        for (const Operation& operation : subject.alone) {
            if (subject.lock != nullptr && operation.name != "Init") {
                EXPECT_FALSE(TakesItsLock(subject, operation))
                    << subject.className << "::" << operation.name
                    << " takes the lock, so its tag could be [any]";
            }
        }
    }
}

TEST(LockTaking, ALoggerWhoseLockItsThreadHoldsThreeTimesFreesItBeforeItIsDestroyed) {
    auto log = std::make_unique<MediaProcessLog>();
    EXPECT_EQ(log->Init(PROCESS_LOG_DEBUG, ""), RESULT_INVALID);
    EXPECT_EQ(log->WriteLog(PROCESS_LOG_DEBUG, ""), RESULT_OK);
    EXPECT_EQ(log->WriteLog(PROCESS_LOG_ERROR, ""), RESULT_NOT_INITIALISED);
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

TEST(LockTaking, InitAndTheDestructorOfAFilterTakeItsLockInside) {
    auto filter = std::make_unique<AudioFilter>();
    {
        const LockCalls calls(&filter->mLock);
        filter->Init(32000, 1, SAMPLE_FMT_S16, nullptr);
        EXPECT_EQ(calls.OfTheOne(), 1) << "through SetMethod";
    }
    const LockCalls calls(&filter->mLock);
    filter.reset();
    EXPECT_EQ(calls.OfTheOne(), 1) << "through Clear";
}

}  // namespace
