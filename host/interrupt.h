#pragma once

/// From now on an interrupt from the keyboard is noted instead of ending the process, so that what
/// has been begun can be put away.
void NoteInterrupts();

/// Whether there has been one.
bool Interrupted();
