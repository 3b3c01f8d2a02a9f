#pragma once

/// Whether standard input, output or error is a terminal.
bool IsInputATerminal();
bool IsOutputATerminal();
bool IsErrorATerminal();

/// The width of standard error's terminal, in columns; 80 if unknown.
int TerminalWidth();
