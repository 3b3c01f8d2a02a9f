#include "host/interrupt.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t interrupted = 0;

}  // namespace

void NoteInterrupts() {
    std::signal(SIGINT, [](int) { interrupted = 1; });
}

bool Interrupted() {
    return interrupted != 0;
}
