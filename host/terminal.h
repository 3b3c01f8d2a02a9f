#pragma once

/// Whether standard input, output or error is a terminal.
bool IsInputATerminal();
bool IsOutputATerminal();
bool IsErrorATerminal();
