#include "host/interrupt.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace {

TEST(Interrupt, SigintSigtermAndSighupAreCaught) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        const auto raiseIt = [number] {
            std::signal(number, SIG_DFL);
            NoteInterrupts();
            const bool before = Interrupted();
            std::raise(number);
            std::exit(!before && Interrupted() ? 0 : 1);
        };
        EXPECT_EXIT(raiseIt(), testing::ExitedWithCode(0), "") << number;
    }
}

TEST(Interrupt, WhereStreamsAreCompletedTheSecondSignalGivesUp) {
    const auto raiseTwice = [] {
        NoteInterrupts();
        CompleteStreamsOnInterrupt();
        const bool before = SignalArrived();
        std::raise(SIGINT);
        const bool first = SignalArrived() && !Interrupted();
        std::raise(SIGTERM);
        std::exit(!before && first && Interrupted() ? 0 : 1);
    };
    EXPECT_EXIT(raiseTwice(), testing::ExitedWithCode(0), "");
}

TEST(Interrupt, TheProcessEndsByTheSignalThatArrived) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        const auto raiseIt = [number] {
            NoteInterrupts();
            EndByInterrupt();  // none yet
            std::raise(number);
            EndByInterrupt();
            std::exit(0);
        };
        EXPECT_EXIT(raiseIt(), testing::KilledBySignal(number), "") << number;
    }
}

TEST(Interrupt, IgnoredSignalsStayIgnored) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        const auto raiseIt = [number] {
            std::signal(number, SIG_IGN);
            NoteInterrupts();
            std::raise(number);
            std::exit(Interrupted() ? 1 : 0);
        };
        EXPECT_EXIT(raiseIt(), testing::ExitedWithCode(0), "") << number;
    }
}

TEST(Interrupt, WritesThatWouldEndTheProcessFail) {
    const auto raiseBoth = [] {
        LetWritesFail();
        std::raise(SIGXFSZ);
        std::raise(SIGPIPE);
        std::exit(0);
    };
    EXPECT_EXIT(raiseBoth(), testing::ExitedWithCode(0), "");
}

}  // namespace
