#include <unistd.h>

#include "host/terminal.h"

bool IsErrorATerminal() {
    return isatty(STDERR_FILENO) == 1;
}
