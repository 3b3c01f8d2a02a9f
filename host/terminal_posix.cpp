#include "host/terminal.h"

#include <unistd.h>

bool IsInputATerminal() {
    return isatty(STDIN_FILENO) == 1;
}

bool IsOutputATerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

bool IsErrorATerminal() {
    return isatty(STDERR_FILENO) == 1;
}
