#pragma once

/// Fills the places of standard input, output and error that are closed, so that no file opened
/// later gets one of them, and with it what is printed. They still cannot be read or written.
void FillStandardStreams();
