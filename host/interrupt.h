#pragma once

/// Catches SIGINT, SIGTERM and SIGHUP so that unfinished files are removed before the process ends:
/// the command line then prints "interrupted" and exits with status 1. A signal that is already
/// ignored, as under nohup, stays ignored.
void NoteInterrupts();

/// Whether one of them has arrived.
bool Interrupted();

/// Makes writes beyond the file size limit or into a closed pipe fail, like writes to a full disk,
/// instead of ending the process.
void LetWritesFail();
