#pragma once

/// Whether standard error is a terminal.
bool IsErrorATerminal();
