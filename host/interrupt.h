#pragma once

/// From now on an interrupt from the keyboard, a request to end (SIGTERM) and a lost terminal
/// (SIGHUP) are noted instead of ending the process, so that what has been begun can be put away:
/// the command line then says "interrupted" and exits with status 1. What is ignored already, such
/// as under nohup, stays ignored.
void NoteInterrupts();

/// Whether there has been one.
bool Interrupted();

/// From now on a write beyond the allowed size of a file or into a closed pipe fails, as on a full
/// disk, instead of ending the process.
void LetWritesFail();
