#include <csignal>
#include <initializer_list>

#include "host/interrupt.h"

namespace {

volatile std::sig_atomic_t interrupted = 0;

}  // namespace

void NoteInterrupts() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action = {};
        sigaction(number, nullptr, &action);
        if (action.sa_handler != SIG_IGN) {
            action = {};  // without SA_RESTART, so that blocking reads return
            action.sa_handler = [](int) { interrupted = 1; };
            sigaction(number, &action, nullptr);
        }
    }
}

bool Interrupted() {
    return interrupted != 0;
}

void LetWritesFail() {
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}
