#include <cerrno>
#include <iostream>

#include "host/command_line.h"
#include "host/failure.h"
#include "host/interrupt.h"
#include "host/standard_streams.h"
#include "host/terminal.h"

int main(int argc, char** argv) {
    FillStandardStreams();
    NoteInterrupts();
    LetWritesFail();
    const int status =
        RunCommandLine(argc, argv, std::cout, std::cerr, IsErrorATerminal() ? &std::cerr : nullptr);
    errno = 0;
    const bool printed = static_cast<bool>(std::cout.flush());
    if (!printed) {
        std::cerr << "audio-filter: " +
                         Failure::WithCause("standard output cannot be written", errno) + "\n";
    }
    EndByInterrupt();
    if (!printed) {
        return 1;
    }
    return status;
}
