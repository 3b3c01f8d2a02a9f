#include <csignal>
#include <initializer_list>

#include "host/interrupt.h"

namespace {

volatile std::sig_atomic_t arrived = 0;  ///< signals so far
volatile std::sig_atomic_t last = 0;     ///< the number of the last one
int endsOnlyStreams = 0;                 ///< how many of them do

void Note(int number) {
    arrived = arrived < 2 ? arrived + 1 : arrived;
    last = number;
}

}  // namespace

void NoteInterrupts() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action = {};
        sigaction(number, nullptr, &action);
        if (action.sa_handler != SIG_IGN) {
            action = {};  // without SA_RESTART, so that blocking calls return
            action.sa_handler = Note;
            sigaction(number, &action, nullptr);
        }
    }
}

bool SignalArrived() {
    return arrived > 0;
}

void CompleteStreamsOnInterrupt() {
    endsOnlyStreams = 1;
}

bool Interrupted() {
    return arrived > endsOnlyStreams;
}

void EndByInterrupt() {
    if (arrived > 0) {
        std::signal(last, SIG_DFL);
        std::raise(last);
    }
}

void LetWritesFail() {
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}
