#include <cerrno>
#include <cstdio>
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
    std::setvbuf(stdout, nullptr, _IOFBF, 1 << 16);  // a summary is one write
    const int status =
        RunCommandLine(argc, argv, std::cout, std::cerr,
                       {&std::cerr, IsErrorATerminal() ? TerminalWidth : nullptr, ""});
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
