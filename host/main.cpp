#include <iostream>

#include "host/command_line.h"
#include "host/interrupt.h"
#include "host/terminal.h"

int main(int argc, char** argv) {
    NoteInterrupts();
    return RunCommandLine(argc, argv, std::cout, std::cerr,
                          IsErrorATerminal() ? &std::cerr : nullptr);
}
