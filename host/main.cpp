#include <iostream>

#include "host/command_line.h"
#include "host/interrupt.h"
#include "host/standard_streams.h"
#include "host/terminal.h"

int main(int argc, char** argv) {
    FillStandardStreams();
    NoteInterrupts();
    LetWritesFail();
    const int status =
        RunCommandLine(argc, argv, std::cout, std::cerr, IsErrorATerminal() ? &std::cerr : nullptr);
    const bool printed = static_cast<bool>(std::cout.flush());
    if (!printed) {
        std::cerr << "audio-filter: standard output cannot be written\n";
    }
    EndByInterrupt();
    if (!printed) {
        return 1;
    }
    return status;
}
