#include <atomic>
#include <csignal>
#include <initializer_list>

#include "host/interrupt.h"

namespace {

// Lock-free, so that the handler may use them on any thread.
std::atomic<int> arrived = 0;          ///< signals so far
std::atomic<int> last = 0;             ///< the number of the last one
std::atomic<int> endsOnlyStreams = 0;  ///< how many of them do
static_assert(std::atomic<int>::is_always_lock_free);

void Note(int number) {
    last = number;
    arrived.fetch_add(1);
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
