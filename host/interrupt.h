#pragma once

/// Catches SIGINT, SIGTERM and SIGHUP, so that an unfinished file is removed or a live recording
/// completed before the process ends. A signal that is already ignored, as under nohup, stays
/// ignored.
void NoteInterrupts();

/// Whether one of them has arrived.
bool SignalArrived();

/// From now on, the first signal only ends the streams that are being read; the second one gives up
/// the job.
void CompleteStreamsOnInterrupt();

/// Whether the job is to be given up.
bool Interrupted();

/// Ends the process by the signal that has arrived, so that a shell loop stops too; returns if none
/// has.
void EndByInterrupt();

/// Makes writes beyond the file size limit or into a closed pipe fail, like writes to a full disk,
/// instead of ending the process.
void LetWritesFail();
