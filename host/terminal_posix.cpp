#include "host/terminal.h"

#include <sys/ioctl.h>
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

int TerminalWidth() {
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}
